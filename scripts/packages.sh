# shellcheck shell=bash
# shellcheck disable=SC2034
# Debian 12 packages by what needs them; the one place where they are listed. Sourced, not run.
# Why each of them is here stands in docs/dependencies.md.

# To build the libraries and the program.
buildPackages=(
  g++ cmake ninja-build pkg-config ccache
  libhwy-dev libkissfft-dev libsoxr-dev
  libavformat-dev libavcodec-dev libavutil-dev libflac-dev libmpg123-dev
  libcli11-dev
  libicu-dev librsvg2-bin
)

# To write PDF; the program does everything else without them.
pdfPackages=(chromium-headless-shell fonts-dejavu-core)

# To make the demo programme that `./run` without arguments shows.
demoPackages=(sox espeak-ng)

# To build and run the tests: other people's tools and libraries, to compare with.
testPackages=(
  libgtest-dev libgmock-dev
  ffmpeg sox libsox-fmt-mp3 flac espeak-ng
  libsndfile1-dev libebur128-dev nlohmann-json3-dev
  "${pdfPackages[@]}" poppler-utils tidy
  binutils python3
)

# For `./test --all`: the second compiler; its package brings the sanitizers of its own.
allTestPackages=(clang libclang-rt-14-dev)

# For the benchmarks, beside what the tests need.
benchPackages=(libbenchmark-dev)
