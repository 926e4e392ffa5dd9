#!/usr/bin/env bash
# bench/archive-export.sh [MESSAGES [MEGABYTES]]: a large store (20,000 messages in 400 MB by default)
# exported. To mbox by one worker, against sha256sum of the store and of all that was written; to HTML
# by two, against one, against cp -r of its own output, and with the catalogue. The catalogue also of
# stores as people have them (MakeMailStore.cpp tells how they are), without PDFs and with them, which
# pdftotext reads one by one: the store of all others is text from end to end. Whole processes, three
# rounds of all in turn, medians of their seconds; peak memory of the largest process in KB; of the
# catalogue also the ratio of what the processors did. Needs the release build and GNU time.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
messages=${1:-20000}
megabytes=${2:-400}
tarnmail=$root/build/release/tarnmail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# measure NAME COMMAND...: adds seconds and peak memory of one run to the file of that name.
measure() {
  local name=$1 start
  shift
  start=$EPOCHREALTIME
  /usr/bin/time -o "$work/peak" -f '%M %U %S' "$@" >/dev/null 2>&1
  awk -v start="$start" -v end="$EPOCHREALTIME" '{ printf "%.4f %s %.2f\n", end - start, $1, $2 + $3 }' "$work/peak" \
    >>"$work/$name"
}

# median FIELD NAME
median() { cut -d ' ' -f "$1" "$work/$2" | sort -n | awk '{ all[NR] = $1 } END { print all[int((NR + 1) / 2)] }'; }

# compare WHAT NAME OTHER
compare() {
  awk -v what="$1" -v one="$(median 1 "$2")" -v other="$(median 1 "$3")" -v memory="$(median 2 "$2")" \
    'BEGIN { printf "  %-36s %s s against %s s   ratio %.2f   %s KB\n", what, one, other, one / other, memory }'
}

# catalogue WHAT NAME OTHER: compares what the processors did too.
catalogue() {
  compare "$@"
  awk -v one="$(median 3 "$2")" -v other="$(median 3 "$3")" \
    'BEGIN { printf "  %-36s %s s against %s s   ratio %.2f\n", "    of the processors", one, other, one / other }'
}

store=$work/large.pst
"$root/build/release/bench/MakeStore" "$store" "$messages" "$megabytes"
printf '%s messages, %s bytes\n' "$messages" "$(stat -c %s "$store")"
for pdfs in 0 1; do
  "$root/build/release/bench/MakeMailStore" "$work/mails-$pdfs.pst" "$messages" "$megabytes" "$pdfs"
done
for _ in 1 2 3; do
  rm -rf "$work"/out-*
  measure mbox "$tarnmail" export "$store" -o "$work/out-mbox" --to mbox --no-catalogue -j 1
  measure sums bash -c 'sha256sum "$1"; find "$2" -type f -print0 | xargs -0 sha256sum' sums "$store" \
    "$work/out-mbox"
  rm -rf "$work/out-mbox"
  measure html-1 "$tarnmail" export "$store" -o "$work/out-1" --no-catalogue -j 1
  measure html-2 "$tarnmail" export "$store" -o "$work/out-2" --no-catalogue -j 2
  measure copy cp -r "$work/out-2" "$work/out-copy"
  rm -rf "$work/out-1" "$work/out-copy"
  measure shown "$tarnmail" export "$store" -o "$work/out-shown" -j 2
  rm -rf "$work"/out-*
  for pdfs in 0 1; do
    measure "mails-$pdfs" "$tarnmail" export "$work/mails-$pdfs.pst" -o "$work/out-2" --no-catalogue -j 2
    measure "shown-$pdfs" "$tarnmail" export "$work/mails-$pdfs.pst" -o "$work/out-shown" -j 2
    rm -rf "$work"/out-*
  done
done
compare 'mbox, 1 worker / sha256sum' mbox sums
compare 'HTML, 2 workers / cp -r' html-2 copy
compare 'HTML, 2 workers / 1 worker' html-2 html-1
catalogue 'with catalogue / without, mails' shown-0 mails-0
catalogue 'the same with PDFs' shown-1 mails-1
catalogue 'the same of text alone' shown html-2
