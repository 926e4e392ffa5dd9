#!/usr/bin/env bash
# bench/archive-mails.sh [FOLDER]: `list` of 1,000 mails against what GMime alone takes to parse them:
# as files, and as one mbox. Then the peak memory of `list` of an mbox of 2,000 mails and of ten times
# as many. The mails are those of the folder, over and over, or made here: of text, of text with HTML,
# and with attachments of up to 200 KB. Whole processes, five of each in turn; medians of the ratios.
# Needs the release build and GNU time.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
folder=${1:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
list=("$root/build/release/tarnmail-archive" list)

# make_mail NUMBER: one mail.
make_mail() {
  local kilobytes=0
  case $(($1 % 10)) in 0) kilobytes=150 ;; 1 | 2) kilobytes=15 ;; esac
  printf 'Received: from a.example by b.example; Sat, 21 Nov 2026 10:00:01 +0000\r\n'
  printf 'From: =?utf-8?q?J=C3=B6rg?= <joerg%d@example.com>\r\nTo: Bob <bob@example.com>\r\n' "$1"
  printf 'Date: Sat, 21 Nov 2026 10:00:00 +0000\r\nMessage-ID: <%d@example.com>\r\n' "$1"
  printf 'Subject: =?utf-8?q?Gr=C3=BC=C3=9Fe?= %d\r\nMIME-Version: 1.0\r\n' "$1"
  printf 'Content-Type: multipart/mixed; boundary="sep"\r\n\r\n'
  printf -- '--sep\r\nContent-Type: multipart/alternative; boundary="alt"\r\n\r\n'
  printf -- '--alt\r\nContent-Type: text/plain; charset=utf-8\r\n\r\n'
  for _ in {1..20}; do printf 'A line of text that is as long as lines of mails are.\r\n'; done
  printf -- '--alt\r\nContent-Type: text/html; charset=utf-8\r\n\r\n<html><body>\r\n'
  for _ in {1..40}; do printf '<p>A line of HTML that is as long as lines of mails are.</p>\r\n'; done
  printf -- '--alt--\r\n'
  if ((kilobytes > 0)); then
    printf -- '--sep\r\nContent-Type: application/octet-stream; name=data.bin\r\n'
    printf 'Content-Transfer-Encoding: base64\r\n\r\n'
    head -c "${kilobytes}K" "$work/random" | base64 -w 76 | sed 's/$/\r/'
  fi
  printf -- '--sep--\r\n'
}

mkdir "$work/mails"
if [ -n "$folder" ]; then
  mapfile -d '' -t sources < <(find "$folder" -type f -name '*.eml' -print0 | sort -z)
  for ((i = 0; i < 1000; i++)); do
    cp "${sources[i % ${#sources[@]}]}" "$work/mails/$(printf '%04d' "$i").eml"
  done
else
  head -c 200K /dev/urandom >"$work/random"
  for ((i = 0; i < 1000; i++)); do make_mail "$i" >"$work/mails/$(printf '%04d' "$i").eml"; done
fi
for mail in "$work/mails"/*; do
  printf 'From ann@example.com Sat Nov 21 10:00:00 2026\n'
  sed 's/^\(>*From \)/>\1/' "$mail"
  printf '\n\n'
done >"$work/thousand.mbox"

# measure COMMAND...: seconds and peak memory of one run.
measure() {
  local start=$EPOCHREALTIME
  /usr/bin/time -o "$work/peak" -f '%M' "$@" >/dev/null
  awk -v start="$start" -v end="$EPOCHREALTIME" '{ printf "%.4f %s", end - start, $1 }' "$work/peak"
}

# median FIELD
median() { cut -d ' ' -f "$1" "$work/runs" | sort -n | sed -n 3p; }

for what in mails thousand.mbox; do
  rm -f "$work/runs"
  for _ in 1 2 3 4 5; do
    echo "$(measure "${list[@]}" "$work/$what") $(
      measure "$root/build/release/bench/ParseMails" "$work/$what")" |
      awk '{ print $1, $2, $3, $1 / $3 }' >>"$work/runs"
  done
  printf '1,000 mails (%s): list %s s, %s KB   GMime alone %s s   ratio %s\n' \
    "$what" "$(median 1)" "$(median 2)" "$(median 3)" "$(median 4)"
done

for times in 2 20; do
  rm -f "$work/large.mbox"
  for ((i = 0; i < times; i++)); do cat "$work/thousand.mbox" >>"$work/large.mbox"; done
  read -r seconds peak < <(measure "${list[@]}" "$work/large.mbox"; echo)
  printf '%s,000 mails of an mbox of %s bytes: list %s s, %s KB\n' \
    "$times" "$(stat -c %s "$work/large.mbox")" "$seconds" "$peak"
done
