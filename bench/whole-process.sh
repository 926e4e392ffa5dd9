#!/usr/bin/env bash
# bench/whole-process.sh [MB]: a mail with one large attachment (70 MB by default) as a document,
# against coreutils' base64 of the same content. Whole processes, five pairs in turn; seconds, peak
# memory in KB, and the ratio of each pair. Needs the release build and GNU time.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
megabytes=${1:-70}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

head -c "${megabytes}M" /dev/urandom | base64 -w 76 | sed 's/$/\r/' >"$work/content"
{
  printf 'From: ann@example.com\r\nTo: bob@example.com\r\nDate: Sat, 21 Nov 2026 10:00:00 +0000\r\n'
  printf 'Subject: Large\r\nContent-Type: multipart/mixed; boundary="sep"\r\n\r\n'
  printf -- '--sep\r\nContent-Type: text/html; charset=utf-8\r\n\r\n'
  printf '<html><head></head><body>Hi</body></html>\r\n'
  printf -- '--sep\r\nContent-Type: application/octet-stream\r\n'
  printf 'Content-Transfer-Encoding: base64\r\n'
  printf 'Content-Disposition: attachment; filename="large.bin"\r\n\r\n'
  cat "$work/content"
  printf -- '--sep--\r\n'
} >"$work/large.eml"
printf 'mail of %s bytes\n' "$(stat -c %s "$work/large.eml")"

# measure NAME COMMAND...: wall seconds and peak memory of one run.
measure() {
  local name=$1
  shift
  /usr/bin/time -o "$work/$name" -f '%e %M' "$@" >/dev/null
}

for _ in 1 2 3 4 5; do
  measure document "$root/build/release/tarnmail" document "$work/large.eml"
  measure base64 base64 -d -i "$work/content"
  paste -d ' ' "$work/document" "$work/base64" |
    awk '{ printf "document %s s %s KB   base64 -d %s s   ratio %.2f\n", $1, $2, $3, $1 / $3 }'
done
