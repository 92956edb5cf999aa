#!/usr/bin/env bash
# Runs an example with the seeds 1 to 10 and fails when fewer than MINIMUM of the answers match PATTERN. An
# example that takes long is run until there are as many.
# Usage: success_rate.sh PROGRAM MINIMUM PATTERN [--stop-early]
set -euo pipefail
program=$1 minimum=$2 pattern=$3 early=${4:-}

successes=0
for seed in 1 2 3 4 5 6 7 8 9 10; do
  answer=$("$program" --seed "$seed") || true
  if [ -n "$early" ] && [ "$successes" -ge "$minimum" ]; then break; fi
  if grep -qE "$pattern" <<<"$answer"; then successes=$((successes + 1)); fi
done
echo "$successes of 10 seeds"
[ "$successes" -ge "$minimum" ]
