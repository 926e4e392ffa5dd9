#!/usr/bin/env bash
# bench/store-process.sh [MESSAGES [MEGABYTES]]: the last message of a large store as a document,
# against sha256sum of the file: for a store of so many messages (10,000 in 100 MB by default), of
# twice and of four times as many. Whole processes, five pairs in turn, medians of their seconds and
# ratios; peak memory in KB; what time and peak have grown by. Then fltInfo of the first and of the
# last message of the largest store inside one process. Needs the release build and GNU time.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
messages=${1:-10000}
megabytes=${2:-100}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# measure COMMAND...: seconds and peak memory of one run.
measure() {
  local start=$EPOCHREALTIME
  /usr/bin/time -o "$work/peak" -f '%M' "$@" >/dev/null
  awk -v start="$start" -v end="$EPOCHREALTIME" '{ printf "%.4f %s", end - start, $1 }' "$work/peak"
}

# median FIELD FILE
median() { cut -d ' ' -f "$1" "$2" | sort -n | awk '{ all[NR] = $1 } END { print all[int((NR + 1) / 2)] }'; }

for times in 1 2 4; do
  count=$((times * messages))
  rm -f "$work/large.pst" "$work/pairs"
  "$root/build/release/bench/MakeStore" "$work/large.pst" "$count" "$((times * megabytes))"
  for _ in 1 2 3 4 5; do
    document=$(measure "$root/build/release/tarnmail" document -m "$count" "$work/large.pst")
    sum=$(measure sha256sum "$work/large.pst")
    echo "$document $sum" | awk '{ print $1, $2, $3, $1 / $3 }' >>"$work/pairs"
  done
  seconds=$(median 1 "$work/pairs")
  peak=$(median 2 "$work/pairs")
  : "${first_seconds:=$seconds}" "${first_peak:=$peak}"
  printf '%s messages, %s bytes: document %s s (x %.2f), %s KB (x %.2f)   sha256sum %s s   ratio %.2f\n' \
    "$count" "$(stat -c %s "$work/large.pst")" \
    "$seconds" "$(awk "BEGIN { print $seconds / $first_seconds }")" \
    "$peak" "$(awk "BEGIN { print $peak / $first_peak }")" \
    "$(median 3 "$work/pairs")" "$(median 4 "$work/pairs")"
done
"$root/build/release/bench/StoreRoad" "$work/large.pst" 1
"$root/build/release/bench/StoreRoad" "$work/large.pst" "$count"
