#!/usr/bin/env bash
# install_test.sh CMAKE BUILD_FOLDER COMPILER CONSUMER_FOLDER LIBDIR CHECK_SYMBOLS
# Installs into a folder, moves it, and builds a small program against it: once by find_package and
# once by pkg-config. Neither may need anything of the build tree.
set -euo pipefail
cmake=$1 build=$2 compiler=$3 consumer=$4 libdir=$5 check=$6

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

quietly() {  # prints what the command said only when it fails
  "$@" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
}

quietly "$cmake" --install "$build" --prefix "$work/first"
mv "$work/first" "$work/moved prefix"
prefix="$work/moved prefix"
python3 "$check" run-paths "$prefix"

quietly "$cmake" -S "$consumer" -B "$work/consumer" -G Ninja "-DCMAKE_CXX_COMPILER=$compiler" \
  "-DCMAKE_PREFIX_PATH=$prefix"
quietly "$cmake" --build "$work/consumer"
"$work/consumer/consumer"

# Spaces in paths are outside pkg-config's trade.
ln -s "$prefix" "$work/prefix"
export PKG_CONFIG_PATH="$work/prefix/$libdir/pkgconfig"
read -ra flags <<<"$(pkg-config --cflags --libs orvane-headless)"
"$compiler" -std=c++20 "$consumer/main.cpp" -o "$work/by-pkg-config" "${flags[@]}"
LD_LIBRARY_PATH="$work/prefix/$libdir" "$work/by-pkg-config"

# Every installed header does with the other installed ones.
(cd "$prefix/include" && find orvane -name '*.h' -printf '#include "%p"\n') >"$work/every_header.cpp"
"$compiler" -std=c++20 -fsyntax-only "-I$prefix/include" "$work/every_header.cpp"

# The program runs from where it was moved to, with the libraries beside it.
"$prefix/bin/orvane" --version | grep FFmpeg
sox -n "$work/tone.flac" synth 0.1 sine 440
"$prefix/bin/orvane" identify "$work/tone.flac" | grep -q FLAC

for licence in silero_vad libicu-dev libcli11-dev; do
  [[ -s $prefix/share/doc/Orvane/third-party/$licence.txt ]]
done
for library in OrvaneCore OrvaneHeadless; do
  readelf -d "$prefix/$libdir/lib$library.so" | grep -q "SONAME.*\[lib$library\.so\.[0-9]*\]"
done
if grep -rqF -- "$build" "$prefix/$libdir/cmake" "$prefix/$libdir/pkgconfig"; then
  echo "the installed package files name the build folder"
  exit 1
fi
