#!/usr/bin/env bash
# Builds the README's first example in a project of which the library's sources are a part. With sources of the library
# compiles only these and the example. Usage: subproject.sh SOURCE_DIR BUILD_DIR COMPILER WORK [SOURCE...]
set -euo pipefail
source=$1 compiler=$3 work=$4/subproject
sources=("${@:5}")
sources=("${sources[@]/#/$source/}")
here=$source/tests/install
rm -rf "$work" && mkdir -p "$work"
export CMAKE_GENERATOR=Ninja # as the build around this one

"$here/readme_program.sh" "$source/README.md" >"$work/readme.cpp"
configure() {
  cmake -S "$here/stranger" -B "$work" -DCMAKE_CXX_COMPILER="$compiler" -DQX_SOURCES="$source" \
    -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG= \
    -DPROGRAM="$work/readme.cpp" "$@" >/dev/null
}
if [ ${#sources[@]} -gt 0 ]; then
  configure -DQX_UNITY_BUILD=OFF
  cmake --build "$work" --target "$work/readme.cpp^" "${sources[@]/%/^}" >/dev/null
else
  configure
  cmake --build "$work" >/dev/null
  "$here/prints_result.sh" "$work/stranger"
fi
