#!/usr/bin/env bash
# Builds a stranger's programs against the installed package, found by CMake and by pkg-config: the README's first example
# and program trees over a value type of the stranger's own. Usage: stranger.sh SOURCE_DIR BUILD_DIR COMPILER WORK
set -euo pipefail
source=$1 compiler=$3 work=$4/stranger prefix=$4/prefix
here=$source/tests/install
rm -rf "$work" && mkdir -p "$work"
export CMAKE_GENERATOR=Ninja # as the build around this one

"$here/readme_program.sh" "$source/README.md" >"$work/readme.cpp"
cmake -S "$here/stranger" -B "$work/found" -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$prefix" \
  -DPROGRAM="$work/readme.cpp" >/dev/null
cmake --build "$work/found" >/dev/null
"$here/prints_result.sh" "$work/found/stranger"

export PKG_CONFIG_PATH
PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name qxevolution.pc)")
"$compiler" -std=c++20 "$work/readme.cpp" $(pkg-config --cflags --libs qxevolution) -o "$work/packaged"
"$here/prints_result.sh" "$work/packaged"
"$compiler" -std=c++20 "$here/program_tree.cpp" $(pkg-config --cflags --libs qxevolution) -o "$work/program_tree"
[ "$("$work/program_tree")" = "6 is six" ] || { echo "a program tree went wrong"; exit 1; }
