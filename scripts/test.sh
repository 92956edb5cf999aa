#!/usr/bin/env bash
# Builds everything optimised, warnings as errors, and runs all tests. With a preset as argument, does so for that
# preset (see CMakePresets.json): scripts/test.sh asan-ubsan
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${1:-release}

tools=(g++ cmake ninja-build pkg-config libpugixml-dev libgtest-dev libbenchmark-dev libxml2-utils locales
  python3-numpy libcli11-dev libfmt-dev gnuplot-nox graphviz chromium fonts-dejavu-core bash)
[ "$preset" = clang ] && tools+=(clang)
scripts/install-tools.sh "${tools[@]}"

cmake --preset "$preset" >/dev/null
echo "Building the $preset preset ..."
cmake --build --preset "$preset" | (grep -E "error|warning|FAILED" || true)
ctest --preset "$preset" --parallel "$(nproc)"
