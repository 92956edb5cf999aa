#!/usr/bin/env bash
# Builds the README's first example in a project of which the library's sources are a part.
# Usage: subproject.sh SOURCE_DIR BUILD_DIR COMPILER WORK
set -euo pipefail
source=$1 compiler=$3 work=$4/subproject
here=$source/tests/install
rm -rf "$work" && mkdir -p "$work"
export CMAKE_GENERATOR=Ninja # as the build around this one

"$here/readme_program.sh" "$source/README.md" >"$work/readme.cpp"
cmake -S "$here/stranger" -B "$work" -DCMAKE_CXX_COMPILER="$compiler" -DQX_SOURCES="$source" \
  -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG= \
  -DPROGRAM="$work/readme.cpp" >/dev/null
cmake --build "$work" >/dev/null
"$here/prints_result.sh" "$work/stranger"
