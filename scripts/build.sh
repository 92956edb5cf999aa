#!/usr/bin/env bash
# Configures a preset and builds it, through ccache where that is installed. Usage: build.sh PRESET [TARGET...]
set -euo pipefail
cd "$(dirname "$0")/.."
preset=$1
targets=("${@:2}")

source scripts/ccache.sh
cmake --preset "$preset" -DCMAKE_CXX_COMPILER_LAUNCHER="${CMAKE_CXX_COMPILER_LAUNCHER:-}" >/dev/null
echo "Building the $preset preset ..."
cmake --build --preset "$preset" ${targets:+--target "${targets[@]}"} | (grep -E "error|warning|FAILED" || true)
