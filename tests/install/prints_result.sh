#!/usr/bin/env bash
# Runs a build of the README's program and looks for its result. Usage: prints_result.sh PROGRAM
set -euo pipefail
"$1" | grep -qE '^[0-9.]+ at [0-9]+$' || { echo "$1 has not found the root"; exit 1; }
