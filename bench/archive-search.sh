#!/usr/bin/env bash
# bench/archive-search.sh [MESSAGES]: tarnmail-search in the catalogue of so many messages
# (100,000 by default), whole processes: the median of eleven in milliseconds, and the ratio to the
# program doing nothing (--help). Needs the release build.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
messages=${1:-100000}
program=$root/build/release/tarnmail-search
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# milliseconds COMMAND...: the median.
milliseconds() {
  local start
  for _ in 1 2 3 4 5 6 7 8 9 10 11; do
    start=$EPOCHREALTIME
    "$@" >/dev/null 2>&1
    awk -v start="$start" -v end="$EPOCHREALTIME" 'BEGIN { printf "%.2f\n", (end - start) * 1000 }'
  done | sort -n | sed -n 6p
}

"$root/build/release/bench/MakeCatalogue" "$work" "$messages"
du -h "$work/catalogue.sqlite"
nothing=$(milliseconds "$program" --help)
printf 'nothing: %s ms\n' "$nothing"
for words in 'w12345' 'w1234 w4321' '"w100 w50"' 'w1999*' 'subject:w700' 'w300 NOT w4 --since 2018' 'w2' 'w2 w3' \
  'receiver'; do
  # shellcheck disable=SC2086
  spent=$(milliseconds "$program" search --limit 20 "$work" $words)
  count=$("$program" search --limit 0 --json "$work" "$words" 2>/dev/null | wc -l)
  awk -v words="$words" -v spent="$spent" -v nothing="$nothing" -v count="$count" \
    'BEGIN { printf "%-26s %6d messages  %7.2f ms  x %.1f\n", words, count, spent, spent / nothing }'
done
