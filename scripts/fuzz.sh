#!/usr/bin/env bash
# Builds the fuzz targets and runs each of them from its seeds. Arguments go to every target: -runs=N bounds the
# number of inputs (default 20000), -max_total_time=N the seconds.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-tools.sh g++ clang cmake ninja-build libpugixml-dev
cmake --preset fuzz >/dev/null
echo "Building the fuzz targets ..."
cmake --build --preset fuzz | (grep -E "error|warning|FAILED" || true)

[ $# -gt 0 ] || set -- -runs=20000
run() {
  local target=$1 corpus=build/fuzz/corpus/$1
  shift
  mkdir -p "$corpus"
  local log=build/fuzz/$target.log
  if ! build/fuzz/tests/fuzz/fuzz_"$target" -max_len=4096 -timeout=10 -rss_limit_mb=4096 \
    -artifact_prefix=build/fuzz/"$target"- -dict=tests/fuzz/documents.dict "$@" "$corpus" \
    tests/fuzz/seeds/"$target" >"$log" 2>&1; then
    tail -n 40 "$log"
    return 1
  fi
  echo "$target: $(grep -E 'DONE|Done' "$log" | tail -n 1)"
}
export -f run
printf '%s\n' GeneticDocument GADomain GeneticAlgorithm GPDomain GeneticProgram ComponentStream Checkpoint |
  xargs -P "$(nproc)" -I{} bash -c 'run {} "$@"' fuzz "$@"
