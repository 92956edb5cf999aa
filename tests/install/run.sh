#!/usr/bin/env bash
# Installs the library into a folder of its own and builds a stranger's project against it in three ways:
# find_package, pkg-config, and add_subdirectory of the sources. The stranger's programs are the README's first
# example, program trees over a value type of the stranger's own and, alone against the installed package, every example of the repository.
# Usage: run.sh SOURCE_DIR BUILD_DIR COMPILER
set -euo pipefail
source=$1 build=$2 compiler=$3
here=$source/tests/install
export CMAKE_GENERATOR=Ninja # as the build around this one
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The first block of C++ in the README.
awk '/^```cpp/ { on = 1; next } /^```/ && on { exit } on' "$source/README.md" > "$work/readme.cpp"
grep -q 'int main' "$work/readme.cpp" || { echo "the README has no program"; exit 1; }
runs() { "$1" | grep -qE '^[0-9.]+ ' || { echo "$1 printed no result"; exit 1; }; }

cmake --install "$build" --prefix "$work/prefix" >/dev/null
if find "$work/prefix" -name 'RandomKernels.h' -o -name 'XMLTree.h' -o -name 'GenesReload.h' -o -name 'BlockKernels.ipp' -o -name 'RegressionWorker.h' | grep -q .; then echo "an internal header was installed"; exit 1; fi

echo "The program ..."
"$work/prefix/bin/qxevolve" --version | grep -q '^qxevolve [0-9]' || { echo "the program was not installed"; exit 1; }
grep -q 'complete .* qxevolve' "$work/prefix/share/bash-completion/completions/qxevolve"
test -s "$(find "$work/prefix/share/doc" -name qxevolve.md)"

echo "find_package ..."
cmake -S "$here/stranger" -B "$work/found" -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$work/prefix" \
  -DPROGRAM="$work/readme.cpp" >/dev/null
cmake --build "$work/found" >/dev/null
runs "$work/found/stranger"

echo "pkg-config ..."
export PKG_CONFIG_PATH
PKG_CONFIG_PATH=$(dirname "$(find "$work/prefix" -name qxevolution.pc)")
"$compiler" -std=c++20 "$work/readme.cpp" $(pkg-config --cflags --libs qxevolution) -o "$work/packaged"
runs "$work/packaged"
"$compiler" -std=c++20 "$here/program_tree.cpp" $(pkg-config --cflags --libs qxevolution) -o "$work/program_tree"
[ "$("$work/program_tree")" = "6 is six" ] || { echo "a program tree went wrong"; exit 1; }

echo "add_subdirectory ..."
cmake -S "$here/stranger" -B "$work/added" -DCMAKE_CXX_COMPILER="$compiler" -DQX_SOURCES="$source" \
  -DPROGRAM="$work/readme.cpp" >/dev/null
cmake --build "$work/added" >/dev/null
runs "$work/added/stranger"

for example in "$source"/examples/*/; do
  echo "$(basename "$example") alone ..."
  cmake -S "$example" -B "$work/alone" -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
  cmake --build "$work/alone" >/dev/null
  rm -r "$work/alone"
done
