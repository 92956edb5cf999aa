#!/usr/bin/env bash
# Checks the formatting of all sources and what clang-tidy has to say about the library. Needs the build of the
# release preset for its list of compile commands.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-tools.sh g++ cmake ninja-build libpugixml-dev libgtest-dev libbenchmark-dev libcli11-dev libfmt-dev clang-format clang-tidy
[ -f build/release/compile_commands.json ] || cmake --preset release >/dev/null

git ls-files '*.h' '*.ipp' '*.cpp' | xargs clang-format --dry-run --Werror
git ls-files 'qx/*.cpp' 'apps/*.cpp' 'examples/*.cpp' |
  xargs -P "$(nproc)" -n 4 clang-tidy -p build/release --quiet --warnings-as-errors='*' --extra-arg=-Wno-unknown-warning-option 2>/dev/null
echo "Formatting and clang-tidy: nothing to report."
