#!/usr/bin/env bash
# bench/store-process.sh [MESSAGES [MEGABYTES]]: the last message of a large store (20,000 messages
# and 200 MB by default) as a document, against sha256sum of the file. Whole processes, five pairs
# in turn; seconds, peak memory in KB, and the ratio of each pair; then fltInfo of the first and of
# the last message inside one process. Needs the release build and GNU time.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
messages=${1:-20000}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$root/build/release/bench/MakeStore" "$work/large.pst" "$messages" "${2:-200}"
printf 'store of %s bytes\n' "$(stat -c %s "$work/large.pst")"

# measure NAME COMMAND...: wall seconds and peak memory of one run.
measure() {
  local name=$1
  shift
  /usr/bin/time -o "$work/$name" -f '%e %M' "$@" >/dev/null
}

for _ in 1 2 3 4 5; do
  measure document "$root/build/release/tarnmail" document -m "$messages" "$work/large.pst"
  measure sha256sum sha256sum "$work/large.pst"
  paste -d ' ' "$work/document" "$work/sha256sum" |
    awk '{ printf "document %s s %s KB   sha256sum %s s   ratio %.2f\n", $1, $2, $3, $1 / $3 }'
done
"$root/build/release/bench/StoreRoad" "$work/large.pst" 1
"$root/build/release/bench/StoreRoad" "$work/large.pst" "$messages"
