#!/usr/bin/env bash
# Builds every example of the repository against the installed package, warnings as errors: each is a project of its own,
# which finds the package itself. Usage: examples.sh SOURCE_DIR BUILD_DIR COMPILER WORK
set -euo pipefail
source=$1 compiler=$3 work=$4/examples prefix=$4/prefix
rm -rf "$work" && mkdir -p "$work/projects"
export CMAKE_GENERATOR=Ninja # as the build around this one

{
  echo 'cmake_minimum_required(VERSION 3.25)'
  echo 'project(examples LANGUAGES CXX)'
  for example in "$source"/examples/*/; do
    echo "add_subdirectory($example $(basename "$example"))"
  done
} >"$work/projects/CMakeLists.txt"
cmake -S "$work/projects" -B "$work" -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_CXX_FLAGS="-O1 -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -ffp-contract=off" >/dev/null
cmake --build "$work" | (grep -E "error|warning|FAILED" || true)
