#!/usr/bin/env bash
# Installs the package into WORK/prefix and looks whether what belongs there is there, and nothing else.
# Usage: package.sh SOURCE_DIR BUILD_DIR COMPILER WORK
set -euo pipefail
source=$1 build=$2 prefix=$4/prefix
rm -rf "$prefix"
cmake --install "$build" --prefix "$prefix" >/dev/null

for internal in RandomKernels.h XMLTree.h GenesReload.h BlockKernels.ipp RegressionWorker.h; do
  [ -z "$(find "$prefix" -name "$internal")" ] || { echo "an internal header was installed: $internal"; exit 1; }
done
# Each header compiles by itself, so whatever the public ones include was installed.
find "$prefix/include" -name '*.h' -printf '#include <%P>\n' >"$4/headers.cpp"
[ "$(wc -l <"$4/headers.cpp")" -gt 60 ] || { echo "hardly a header was installed"; exit 1; }
"$3" -std=c++20 -fsyntax-only -I "$prefix/include" "$4/headers.cpp"
# What is installed is what lies in the sources.
(cd "$prefix/include" && find qx -type f | while read -r header; do cmp "$header" "$source/$header"; done)

"$prefix/bin/qxevolve" --version | grep -q '^qxevolve [0-9]' || { echo "the program was not installed"; exit 1; }
grep -q 'complete .* qxevolve' "$prefix/share/bash-completion/completions/qxevolve"
test -s "$(find "$prefix/share/doc" -name qxevolve.md)"
