#!/usr/bin/env bash
# run_script_test.sh ROOT
# `run` works from any folder, through a link, from a tree whose path has spaces, and builds only
# when something changed. The tree is a copy with a small program in the place of the real one.
set -euo pipefail
root=$1

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
tree="$work/a tree with spaces & more"
mkdir -p "$tree/cli" "$tree/orvane" "$tree/cmake"
cp -r "$root/run" "$root/scripts" "$tree/"
printf '#!/bin/sh\n' >"$tree/scripts/install-model"  # nothing is fetched for a test
printf '%s\n' '#include <cstdio>' \
  'int main(int n, char** a) { for (int i = 1; i < n; ++i) std::printf("[%s]", a[i]); }' \
  >"$tree/cli/main.cpp"
printf '%s\n' 'cmake_minimum_required(VERSION 3.24)' 'project(Small LANGUAGES CXX)' \
  'set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")' \
  'add_executable(orvane cli/main.cpp)' >"$tree/CMakeLists.txt"
cp "$root/CMakePresets.json" "$tree/"

expect() {  # expect WHAT WANTED GOT
  [[ $3 == "$2" ]] || { echo "$1: wanted '$2', got '$3'"; exit 1; }
}

cd /
expect "first run" "[a b][c]" "$("$tree/run" 'a b' c 2>/dev/null)"
program="$tree/build/release/bin/orvane"
built=$(stat -c %Y.%y "$program")

ln -s "$tree/run" "$work/link"
cd "$work"
expect "by a link" "[x]" "$(./link x 2>"$work/errors")"
expect "an unchanged tree is silent" "" "$(cat "$work/errors")"
expect "an unchanged tree is not built" "$built" "$(stat -c %Y.%y "$program")"

sed -i 's/\[%s\]/<%s>/' "$tree/cli/main.cpp"
expect "after a change" "<x>" "$("$tree/run" x 2>/dev/null)"

echo 'no such thing' >>"$tree/cli/main.cpp"
if "$tree/run" x >"$work/out" 2>"$work/errors"; then
  echo "a failed build must fail"
  exit 1
fi
expect "a failed build runs nothing" "" "$(cat "$work/out")"
grep -q 'main.cpp' "$work/errors"
