#!/usr/bin/env bash
# scripts/check-limits.sh PAGE TESTS: does every row of the page's tables that end in "Shown by" name a
# test, and is there each test that it names?
#
# A test is `Suite.Name`, as a TEST, TEST_F or TEST_P below the folder TESTS or as an add_test there, or
# `scripts/NAME.sh` beside this script. Names each that is missing, and each row without one, a line
# each; exit status 0 when there is none.
set -euo pipefail
page=$1
tests=$2
scripts=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

# Tests of the sources, as Suite.Name, one a line. A macro may be broken after its comma.
known=$(
  find "$tests" -name '*.cpp' -exec cat {} + | tr '\n' ' ' |
    grep -oE '\bTEST(_F|_P)?\( *[A-Za-z0-9_]+, +[A-Za-z0-9_]+ *\)' |
    sed -E 's/^[A-Z_]+\( *([A-Za-z0-9_]+), +([A-Za-z0-9_]+) *\)$/\1.\2/'
  find "$tests" -name CMakeLists.txt -exec grep -hoE 'add_test\(NAME [A-Za-z0-9_.]+' {} + |
    sed 's/^add_test(NAME //'
)

bad=0
rows=0
while IFS= read -r proofs; do
  rows=$((rows + 1))
  names=$(grep -oE '`[^`]+`' <<<"${proofs##*$'\t'}" | tr -d '`' || true)
  [ -n "$names" ] || { echo "no test: ${proofs%%$'\t'*}"; bad=1; continue; }
  while IFS= read -r name; do
    case $name in
      scripts/*) [ -x "$scripts/${name#scripts/}" ] && continue ;;
      *) grep -qxF -- "$name" <<<"$known" && continue ;;
    esac
    echo "no such test: $name"
    bad=1
  done <<<"$names"
done < <(awk -F'|' '
  /^\|/ && $(NF - 1) ~ /Shown by/ { inside = 1; next }
  !/^\|/ { inside = 0 }
  inside && !/^\|-/ { gsub(/^ +| +$/, "", $2); gsub(/^ +| +$/, "", $3); print $2 ": " $3 "\t" $(NF - 1) }' "$page")
[ "$rows" -gt 0 ] || { echo "no table in $page"; exit 1; }
exit "$bad"
