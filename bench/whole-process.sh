#!/usr/bin/env bash
# bench/whole-process.sh [MB]: a mail with one large attachment (70 MB by default) as a document and
# its attachment extracted, against coreutils' base64 of the same content; then mails of n, 2n and
# 4n images with a reference each. Whole processes, five of each in turn; seconds, peak memory in KB,
# and ratios. Needs the release build and GNU time.
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
  measure document "$root/build/release/tarnmail" document --in-memory "$work/large.eml"
  measure extract "$root/build/release/tarnmail" extract -o "$work/extracted" "$work/large.eml" 1
  measure base64 base64 -d -i "$work/content"
  paste -d ' ' "$work/document" "$work/extract" "$work/base64" |
    awk '{ printf "document %s s %s KB   extract %s s %s KB   base64 -d %s s   ratios %.2f %.2f\n",
           $1, $2, $3, $4, $5, $1 / $5, $3 / $5 }'
done

# images COUNT: a mail of so many images of 300 bytes.
images() {
  local i
  printf 'From: ann@example.com\r\nTo: bob@example.com\r\nDate: Sat, 21 Nov 2026 10:00:00 +0000\r\n'
  printf 'Content-Type: multipart/related; boundary="sep"\r\n\r\n'
  printf -- '--sep\r\nContent-Type: text/html; charset=utf-8\r\n\r\n<html><body>'
  for ((i = 0; i < $1; i++)); do printf '<img src="cid:image%d.png@example">\r\n' "$i"; done
  for ((i = 0; i < $1; i++)); do
    printf -- '--sep\r\nContent-Type: image/png; name=image%d.png\r\n' "$i"
    printf 'Content-ID: <image%d.png@example>\r\nContent-Transfer-Encoding: base64\r\n\r\n' "$i"
    printf '%0400d\r\n' 0
  done
  printf -- '--sep--\r\n'
}

for count in 4000 8000 16000; do images "$count" >"$work/$count.eml"; done
for _ in 1 2 3 4 5; do
  for count in 4000 8000 16000; do
    measure "$count" "$root/build/release/tarnmail" document --in-memory "$work/$count.eml"
  done
  paste -d ' ' "$work/4000" "$work/8000" "$work/16000" |
    awk '{ printf "images %s s %s s %s s   growth %.2f %.2f\n", $1, $3, $5, $3 / $1, $5 / $3 }'
done
