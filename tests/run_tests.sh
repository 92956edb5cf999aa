#!/usr/bin/env bash
# Runs a program of tests and prints what ctest's log needs: of tests that pass nothing but what they said themselves, of
# others all, and the test that was running when the program died. On a machine of CI, which has all tools, a skipped test
# is a failure. Usage: run_tests.sh PROGRAM [ARGUMENT...]
set -uo pipefail
"$@" 2>&1 | awk '
  /^\[ RUN      \]/ { held = $0; next }
  /^\[       OK \]/ { held = ""; next }
  held != "" { print held; held = "" }
  /^\[  SKIPPED \]/ { skipped = 1 }
  { print }
  END {
    if (held != "") { print held; print "The program ended in this test." }
    if (skipped && ENVIRON["CI"] != "") { print "A test was skipped."; exit 1 }
  }'
