# shellcheck shell=bash
# What `run`, `test` and the demo share. Sourced with `root` set to the top of the source tree.
# Everything said here goes to standard error: standard output belongs to the program.

source "$root/scripts/packages.sh"

say() { printf '%s\n' "$*" >&2; }

# requirePackages NAME…
# Installs what is missing of the named Debian packages; quick and silent when nothing is.
requirePackages() {
  if ! command -v dpkg-query >/dev/null; then
    return 0  # not a Debian system: the build itself tells what it does not find
  fi
  local installed missing=() package
  installed=" $(dpkg-query -W -f '${Package}=${db:Status-Status} ' "$@" 2>/dev/null || true)"
  for package in "$@"; do
    [[ $installed == *" $package=installed "* ]] || missing+=("$package")
  done
  ((${#missing[@]})) || return 0

  local asRoot=()
  if ((EUID != 0)); then
    if command -v sudo >/dev/null && sudo -n true 2>/dev/null; then
      asRoot=(sudo -n)
    else
      say "orvane: please install as root: apt-get install ${missing[*]}"
      exit 1
    fi
  fi
  say "Installing ${missing[*]} …"
  local log
  log=$(mktemp)
  local install=("${asRoot[@]}" env DEBIAN_FRONTEND=noninteractive
    apt-get install -y -q --no-install-recommends "${missing[@]}")
  # A fresh system has no package lists yet, an old one outdated ones.
  if ! "${install[@]}" >"$log" 2>&1 &&
    ! { "${asRoot[@]}" apt-get update -q && "${install[@]}"; } >"$log" 2>&1; then
    tail -n 20 "$log" >&2
    rm -f "$log"
    say "orvane: could not install ${missing[*]}"
    exit 1
  fi
  rm -f "$log"
}

# wantPackages WHAT NAME…
# The same for packages that can be done without; WHAT says what is then missing.
wantPackages() {
  local what=$1
  shift
  (requirePackages "$@") || say "orvane: going on without $what"
}

# buildPreset PRESET TARGET [CMAKE_OPTION…]
# Configures build/PRESET when there is nothing yet or options are given, then builds the target.
# On a terminal the compiler's progress is shown; otherwise only what fails.
buildPreset() {
  local preset=$1 target=$2
  shift 2
  local build="$root/build/$preset"
  export CCACHE_BASEDIR="$root" CCACHE_NOHASHDIR=1
  mkdir -p "$build"
  local log="$build/last-build.log"
  if [[ ! -f $build/build.ninja ]] || (($#)); then
    (cd "$root" && cmake --preset "$preset" "$@") >"$log" 2>&1 || { cat "$log" >&2; return 1; }
  fi
  if [[ -t 2 ]]; then
    cmake --build "$build" --target "$target" >&2
  else
    cmake --build "$build" --target "$target" >"$log" 2>&1 || { cat "$log" >&2; return 1; }
  fi
}

# installModel PRESET
# Puts the speech model where the libraries of build/PRESET look for it; quick when it is there.
installModel() {
  "$root/scripts/install-model" "$root/build/$1/lib/OrvaneHeadless_OrvaneHeadless.bundle"
}
