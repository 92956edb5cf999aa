#!/usr/bin/env bash
# Proves what takes long, in stages, and prints a table of what each has proven: thorough.sh [STAGE...], all without an
# argument. Its logs lie in build/thorough.
#
#   gcc         all tests with all their cases, optimised, each source compiled by itself; examples and benchmarks build
#   examples    how often every example succeeds, ten seeds each
#   benchmarks  each benchmark runs once
#   clang       as gcc, by the other compiler
#   asan-ubsan  all tests by gcc under the address and undefined-behaviour sanitizers
#   tsan        every test that uses threads, under the thread sanitizer
#   lint        the linter over everything
#   fuzz        ten minutes of fuzzing a target
#   plain-cpu   pinned runs on a processor model without fused multiplication and without AVX
#   aarch64     a build for 64-bit ARM and its tests in an emulator
set -euo pipefail
cd "$(dirname "$0")/.."
stages=(gcc examples benchmarks clang asan-ubsan tsan lint fuzz plain-cpu aarch64)

# Tests whose outcome is pinned, or is to be the same on every processor.
pinned='Pinned*:*ASeedGives*:Random.*:BlockKernels.*'

stage_examples() {
  scripts/build.sh gcc compression_spring kepler knapsack multiplexer quartic regression santa_fe_ant
  ctest --preset gcc --build-config Thorough --tests-regex '^Examples' --parallel "$(nproc)"
}

stage_benchmarks() {
  scripts/build.sh gcc qx_benchmarks qx_accuracy
  build/gcc/benchmarks/qx_benchmarks --benchmark_min_time=0.001 --benchmark_format=json | tee build/thorough/benchmarks.json
  build/gcc/benchmarks/qx_accuracy 0.05
  echo "Proved: $(grep -c '"run_name"' build/thorough/benchmarks.json) benchmarks ran"
}

# Runs the pinned tests of the release preset in an emulator of a processor. Usage: pinned_tests EMULATOR...
pinned_tests() {
  local folder differing count=0
  for folder in engine genetic_programming platform symbolic_regression; do
    "$@" "build/$preset/tests/qx_${folder}_tests" --gtest_filter="$pinned" --gtest_brief=1 | tee build/thorough/pinned.txt
    count=$((count + $(sed -n 's/^\[  PASSED  \] \([0-9]*\) tests*\.$/\1/p' build/thorough/pinned.txt)))
  done
  [ "$count" -gt 0 ]
  build/release/tests/qx_function_fingerprints >build/thorough/functions.txt
  "$@" "build/$preset/tests/qx_function_fingerprints" >build/thorough/functions_there.txt
  differing=$({ diff build/thorough/functions.txt build/thorough/functions_there.txt || true; } | sed -n 's/^> \([A-Za-z]*\) .*/\1/p' | paste -sd ' ')
  echo "Proved: $count tests of pinned runs; functions of the C library that differ: ${differing:-none}"
}

stage_plain-cpu() {
  scripts/install-tools.sh qemu-user
  local preset=release
  scripts/build.sh release qx_{engine,genetic_programming,platform,symbolic_regression}_tests qx_function_fingerprints
  pinned_tests qemu-x86_64 -cpu Nehalem
}

stage_aarch64() {
  local preset=aarch64
  scripts/install-tools.sh g++-aarch64-linux-gnu qemu-user libpugixml-dev:arm64 libgtest-dev:arm64
  scripts/build.sh release qx_function_fingerprints
  scripts/test.sh aarch64
  scripts/build.sh aarch64 qx_function_fingerprints
  pinned_tests qemu-aarch64
}

run_stage() {
  case $1 in
  gcc | clang | asan-ubsan) scripts/test.sh "$1" ;;
  tsan) scripts/test.sh tsan platform symbolic_regression apps/qxevolve ;;
  lint) scripts/lint.sh all ;;
  fuzz) scripts/fuzz.sh -max_total_time=600 ;;
  *) "stage_$1" ;;
  esac
}

if [ "${1:-}" = --run ]; then # a stage by itself, which ends with the first command that fails
  mkdir -p build/thorough
  run_stage "$2"
  exit
fi
for name in "$@"; do
  [[ " ${stages[*]} " == *" $name "* ]] || { echo "There is no stage $name; there are: ${stages[*]}" >&2; exit 2; }
done
[ $# -gt 0 ] || set -- "${stages[@]}"
logs=build/thorough
source scripts/stages.sh
for name in "$@"; do
  stage "$name" scripts/thorough.sh --run "$name"
done
report
