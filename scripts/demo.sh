#!/usr/bin/env bash
# Builds the library and runs three of its example programs on real problems.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-tools.sh g++ cmake ninja-build libpugixml-dev

echo "Building the library and the examples ..."
cmake -S . -B build/demo -G Ninja -DCMAKE_BUILD_TYPE=Release -DQX_BUILD_TESTS=OFF -DQX_BUILD_EXAMPLES=ON >/dev/null
cmake --build build/demo | tail -n 1

echo
echo "=== Compression spring: the least wire volume under eight constraints ==="
build/demo/examples/compression_spring/compression_spring
echo
echo "=== Kepler: a law of nature out of eight planets ==="
build/demo/examples/kepler/kepler
echo
echo "=== Knapsack: the most profit that fits ==="
build/demo/examples/knapsack/knapsack
