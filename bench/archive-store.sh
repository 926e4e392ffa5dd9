#!/usr/bin/env bash
# bench/archive-store.sh [MESSAGES [MEGABYTES]]: a large store (20,000 messages in 400 MB by default)
# and one of a tenth of it, read to the end as the archive commands do: what a line of a list shows,
# all fields, and everything with bodies and attachments; and listed by tarnmail. Each against
# sha256sum of the file. Whole processes, five pairs in turn, medians of their seconds and ratios;
# peak memory in KB. Needs the release build and GNU time.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
messages=${1:-20000}
megabytes=${2:-400}
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

# compare NAME COMMAND...: the command and sha256sum of the store in turn.
compare() {
  local name=$1 command sum
  shift
  rm -f "$work/pairs"
  for _ in 1 2 3 4 5; do
    command=$(measure "$@")
    sum=$(measure sha256sum "$work/large.pst")
    echo "$command $sum" | awk '{ print $1, $2, $3, $1 / $3 }' >>"$work/pairs"
  done
  printf '  %-9s %s s, %s KB   sha256sum %s s   ratio %.3f\n' "$name" "$(median 1 "$work/pairs")" \
    "$(median 2 "$work/pairs")" "$(median 3 "$work/pairs")" "$(median 4 "$work/pairs")"
}

for part in 10 1; do
  "$root/build/release/bench/MakeStore" "$work/large.pst" $((messages / part)) $((megabytes / part))
  printf '%s messages, %s bytes\n' $((messages / part)) "$(stat -c %s "$work/large.pst")"
  for detail in headline envelope all; do
    compare "$detail" "$root/build/release/bench/ArchiveStore" "$work/large.pst" "$detail"
  done
  compare 'list' "$root/build/release/tarnmail" list "$work/large.pst"
  compare 'as JSON' "$root/build/release/tarnmail" list --json "$work/large.pst"
done
