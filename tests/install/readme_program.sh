#!/usr/bin/env bash
# Prints the first program of a README. Usage: readme_program.sh README
set -euo pipefail
program=$(awk '/^```cpp/ { on = 1; next } /^```/ && on { exit } on' "$1")
grep -q 'int main' <<<"$program" || { echo "the README has no program" >&2; exit 1; }
printf '%s\n' "$program"
