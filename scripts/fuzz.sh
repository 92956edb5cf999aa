#!/usr/bin/env bash
# Builds the fuzz targets and runs each of them from its seeds. Arguments go to every target: -runs=N bounds the
# number of inputs (default 3000), -max_total_time=N the seconds.
set -euo pipefail
cd "$(dirname "$0")/.."
build=build/clang-sanitized

scripts/install-tools.sh g++ clang libclang-rt-dev cmake ninja-build libpugixml-dev libgtest-dev libcli11-dev libfmt-dev
mapfile -t targets < <(find tests/fuzz -name '*Fuzz.cpp' -printf '%f\n' | sed 's/Fuzz.cpp//' | sort)
scripts/build.sh clang-sanitized "${targets[@]/#/fuzz_}"

[ $# -gt 0 ] || set -- -runs=3000
run() {
  local target=$1 corpus=build/fuzz/corpus/$1 log=build/fuzz/$1.log
  shift
  mkdir -p "$corpus"
  if ! "$build/tests/fuzz/fuzz_$target" -max_len=4096 -timeout=10 -rss_limit_mb=4096 \
    -artifact_prefix="build/fuzz/$target-" -dict=tests/fuzz/documents.dict "$@" "$corpus" \
    "tests/fuzz/seeds/$target" >"$log" 2>&1; then
    tail -n 40 "$log"
    echo "$target: FAILED; the input lies in build/fuzz"
    return 1
  fi
  echo "$target: $(grep -E '^Done' "$log" | tail -n 1)"
}
export -f run
export build
printf '%s\n' "${targets[@]}" | xargs -P "$(nproc)" -I{} bash -c 'run {} "$@"' fuzz "$@"
inputs=$(for target in "${targets[@]}"; do grep -E '^Done' "build/fuzz/$target.log"; done | awk '{ sum += $2 } END { print sum }')
echo "Proved: ${#targets[@]} targets, $inputs inputs"
