#!/usr/bin/env bash
# Shows that a program of tests runs the functions that the library was compiled with: each function of the library is in
# the program, and as long as in the library. One that the program's own objects had brought, compiled with other flags,
# would have another length. The helper that clang adds to each object is nobody's. Usage: own_code.sh LIBRARY PROGRAM
set -euo pipefail
library=$1 program=$2
functions() { nm --print-size --defined-only "$1" 2>/dev/null | awk 'NF == 4 && $3 ~ /[TW]/ && $4 !~ /^__clang_/ { print $4, $2 }' | sort -u; }
awk '
  NR == FNR { library[$1] = library[$1] " " $2 " "; next }
  $1 in library { found++; if (index(library[$1], " " $2 " ") == 0) { print "not the library'"'"'s own: " $1; foreign++ } }
  END {
    for (name in library) { count++ }
    print found " of " count " functions of the library are in the program, " foreign + 0 " of them not its own"
    exit found != count || foreign > 0
  }' <(functions "$library") <(functions "$program")
