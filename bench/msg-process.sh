#!/usr/bin/env bash
# bench/msg-process.sh [MB]: extraction of an MSG file's large attachment (50 MB by default) to a
# file, against cp of that attachment, and the message's document. Whole processes, five pairs in
# turn; milliseconds, peak memory in KB, and the ratio of each pair (the aim is three at most). Needs the
# release build and GNU time; TARN_BUILD names another build.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${TARN_BUILD:-$root/build/release}
megabytes=${1:-50}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$build/bench/MakeMsg" "$megabytes" "$work/large.msg" "$work/content"
printf 'message of %s bytes\n' "$(stat -c %s "$work/large.msg")"

# measure NAME COMMAND...: milliseconds and peak memory of one run.
measure() {
  local name=$1 start=${EPOCHREALTIME/[.,]/}
  shift
  /usr/bin/time -o "$work/memory" -f '%M' "$@" >/dev/null
  echo "$(((${EPOCHREALTIME/[.,]/} - start) / 1000)) $(cat "$work/memory")" >"$work/$name"
}

for _ in 1 2 3 4 5; do
  measure extract "$build/tarnmail" extract "$work/large.msg" 1 -o "$work/extracted"
  cmp "$work/extracted" "$work/content"
  rm "$work/extracted"
  measure copy cp "$work/content" "$work/copied"
  rm "$work/copied"
  measure document "$build/tarnmail" document "$work/large.msg"
  paste -d ' ' "$work/extract" "$work/copy" "$work/document" |
    awk '{ printf "extract %d ms %d KB   cp %d ms   document %d ms %d KB   ratio %.2f\n",
           $1, $2, $3, $5, $6, $1 / ($3 + ($3 == 0)) }'
done
