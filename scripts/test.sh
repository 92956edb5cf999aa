#!/usr/bin/env bash
# Builds the library as users get it, warnings as errors, and runs all tests. Usage: test.sh [PRESET [FOLDER...]]
# With a preset (see CMakePresets.json) does so for that one; with folders of tests/ for these alone: test.sh release engine
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${1:-release}
folders=("${@:2}")

scripts/install-tools.sh g++ cmake ninja-build pkg-config libpugixml-dev libgtest-dev libbenchmark-dev libxml2-utils \
  locales python3-numpy libcli11-dev libfmt-dev gnuplot-nox graphviz chromium fonts-dejavu-core bash
case $preset in clang*) scripts/install-tools.sh clang libclang-rt-dev ;; esac

targets=() only=()
for folder in "${folders[@]}"; do
  [ -d "tests/$folder" ] || { echo "There is no folder tests/$folder." >&2; exit 2; }
  targets+=("qx_${folder//\//_}_tests")
done
[ ${#folders[@]} -eq 0 ] || only=(--label-regex "^($(IFS='|'; echo "${folders[*]}"))\$")

scripts/build.sh "$preset" "${targets[@]}"
source scripts/ccache.sh # for the projects that the install tests build
ctest --preset "$preset" --parallel "$(nproc)" "${only[@]}"
