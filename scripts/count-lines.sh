#!/usr/bin/env bash
# Counts C++ lines (.cpp and .h): the tests in tests/ against all of src, tools, bench, tests and
# fuzz. The house rule is tests at most a third of the total; with --check the script fails above it.
set -euo pipefail
cd "$(dirname "$0")/.."

lines_in() {
  local total=0 n
  for dir in "$@"; do
    [[ -d $dir ]] || continue
    n=$(find "$dir" -type f \( -name '*.cpp' -o -name '*.h' \) -print0 | xargs -0 -r cat | wc -l)
    total=$((total + n))
  done
  echo "$total"
}

tests=$(lines_in tests)
all=$(lines_in src tools bench tests fuzz)
other=$((all - tests))
printf 'tests   %6d lines\nother   %6d lines (src, tools, bench, fuzz)\nall     %6d lines\n' "$tests" "$other" "$all"
awk -v t="$tests" -v a="$all" 'BEGIN { printf "ratio   %6.1f%% of all C++ lines are tests (at most 33.3%%)\n", 100 * t / a }'
if [[ ${1:-} == --check ]] && ((3 * tests > all)); then
  echo "tests are more than a third of the C++ lines" >&2
  exit 1
fi
