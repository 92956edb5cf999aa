# For scripts that do their work in stages. Source it, set `logs` to a folder, call `stage NAME COMMAND...` for each one and
# `report` in the end: it prints a table of what each of them said last and took, and fails if one of them did.

stage_rows=()
stages_failed=0

stage() {
  local name=$1 log=$logs/$1.log result=passed before after
  shift
  mkdir -p "$logs"
  printf '\n=== %s ===\n' "$name"
  before=$(stage_clock)
  "$@" </dev/null 2>&1 | tee "$log" || { result=FAILED; stages_failed=1; }
  after=$(stage_clock)
  stage_rows+=("$(awk -v name="$name" -v result="$result" -v before="$before" -v after="$after" -v said="$(stage_summary "$log")" '
    BEGIN { split(before, b); split(after, a); printf "%-16s %-7s %7.0f %9.0f  %s", name, result, a[1] - b[1], a[2] - b[2], said }')")
}

# Seconds by the clock, and by the processors in all commands that have ended.
stage_clock() { echo "$EPOCHREALTIME $(awk '{ print ($16 + $17) / 100 }' "/proc/$$/stat")"; }

# The line by which a log tells how much it proved.
stage_summary() { grep -E '^[0-9]+% tests passed|^Proved: |passed, [0-9]+ failed' "$1" | tail -n 1 | sed 's/^Proved: //'; }

report() {
  printf '\n%-16s %-7s %7s %9s  %s\n' stage result seconds processor 'what it says'
  printf '%s\n' "${stage_rows[@]}"
  return "$stages_failed"
}
