#!/usr/bin/env bash
# Runs an example with the seeds 1 to SEEDS (10) and fails when fewer than MINIMUM of the answers match PATTERN.
# Usage: success_rate.sh PROGRAM MINIMUM PATTERN [SEEDS]
set -euo pipefail
program=$1 minimum=$2 pattern=$3 seeds=${4:-10}

successes=0
for ((seed = 1; seed <= seeds; seed++)); do
  answer=$("$program" --seed "$seed") || true # an example whose problem is not solved tells so
  if grep -qE "$pattern" <<<"$answer"; then successes=$((successes + 1)); fi
done
echo "$successes of $seeds seeds"
[ "$successes" -ge "$minimum" ]
