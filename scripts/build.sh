#!/usr/bin/env bash
# Configures a preset and builds it, through ccache where that is installed. Usage: build.sh PRESET [TARGET...]
set -euo pipefail
cd "$(dirname "$0")/.."
preset=$1
targets=("${@:2}")

launcher=
if command -v ccache >/dev/null; then
  launcher=ccache
  # Clones in other folders share what was compiled; precompiled headers are known by what they were made from.
  export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1 CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
fi
cmake --preset "$preset" -DCMAKE_CXX_COMPILER_LAUNCHER=$launcher >/dev/null
echo "Building the $preset preset ..."
cmake --build --preset "$preset" ${targets:+--target "${targets[@]}"} | (grep -E "error|warning|FAILED" || true)
