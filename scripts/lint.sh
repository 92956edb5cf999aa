#!/usr/bin/env bash
# Checks the formatting of all sources, and what clang-tidy has to say about those of the library, the program and the
# examples that differ from where this branch began; `lint.sh all` about all of them. What differs is told from QX_BASE, a
# commit, or else from the main branch of origin or, where that is no older, from the last commit a day before this one.
# All are looked at when the linter's configuration differs, or a header of qx/platform, which nearly all include.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-tools.sh git g++ clang cmake ninja-build libpugixml-dev libgtest-dev libbenchmark-dev libcli11-dev libfmt-dev \
  clang-format clang-tidy
git ls-files '*.h' '*.ipp' '*.cpp' | xargs clang-format --dry-run --Werror

base_commit() {
  local base=${QX_BASE:-}
  [ -n "$base" ] || base=$(git merge-base HEAD origin/main 2>/dev/null || true)
  if [ -z "$base" ] || [ "$base" = "$(git rev-parse HEAD)" ]; then
    base=$(git rev-list -1 --before="$(($(git log -1 --format=%ct) - 86400))" HEAD)
  fi
  echo "$base"
}

# A source by which a header is compiled: of those that include it the one of its name or else the first, or that of a header
# that includes it.
source_of() {
  local header=$1 stem=${1%.*} includers includer seen=" ${2:-} "
  [ ! -f "$stem.cpp" ] || { echo "$stem.cpp"; return; }
  includers=$(git grep -lE "#include [<\"](.*/)?$(basename "$header" | sed 's/\./\\./g')[>\"]" -- qx apps examples || true)
  includer=$(grep -m 1 '\.cpp$' <<<"$includers" || true)
  [ -z "$includer" ] || { echo "$includer"; return; }
  for includer in $includers; do
    [[ $seen == *" $includer "* ]] || { source_of "$includer" "$seen$header"; return; }
  done
}

tidy() { # for the sources on standard input, with the commands of a build
  xargs -r -P "$(nproc)" -n 1 clang-tidy -p "$1" --quiet --warnings-as-errors='*' \
    --extra-arg=-Wno-unknown-warning-option --checks="$2" 2>/dev/null
}

base=
[ "${1:-}" = all ] || base=$(base_commit)
if [ -z "$base" ] || [ -n "$(git diff --name-only "$base" -- .clang-tidy 'qx/platform/*.h')" ]; then
  # As they are compiled, a folder at once, in half the time.
  cmake --preset lint-all >/dev/null
  sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p' build/lint-all/compile_commands.json |
    tidy build/lint-all -bugprone-suspicious-include
  what="all sources"
else
  mapfile -t sources < <(git diff --name-only --diff-filter=d "$base" -- 'qx/' 'apps/' 'examples/' | while read -r file; do
    case $file in
    *.cpp) echo "$file" ;;
    *.h | *.ipp) source_of "$file" ;;
    esac
  done | sort -u)
  cmake --preset lint >/dev/null
  printf '%s\n' "${sources[@]}" | tidy build/lint ''
  what="${#sources[@]} sources that differ from $(git rev-parse --short "$base") or include what does"
fi
echo "Proved: the formatting of all, clang-tidy over $what"
