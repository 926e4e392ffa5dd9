#!/usr/bin/env bash
# bench/pages.sh [MAIL...]: how long pages of mails take: the mails of examples/ by default, by the
# documents that the filter makes of them. Warm helpers first, a kind of document a time, and the
# most memory that each has had; then whole processes: `tarnmail pages` of the first HTML mail to
# PNG, and to PDF against headless Chromium's print of the same document where Chromium is installed,
# five pairs in turn. Needs the release build with the page helpers; TARN_BUILD names another build.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${TARN_BUILD:-$root/build/release}
mails=("$@")
[ $# -gt 0 ] || mails=("$root"/examples/*.eml "$root"/examples/msg/*.msg)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

number=0
for mail in "${mails[@]}"; do
  for text in "" --text; do
    kind=$("$build/tarnmail" info $text --json "$mail" 2>/dev/null | sed -nE 's/.*"document": "(HTML|RTF|text)".*/\1/p')
    case $kind in
      HTML) ending=html ;;
      RTF) ending=rtf ;;
      text) ending=txt ;;
      *) continue ;;
    esac
    number=$((number + 1))
    "$build/tarnmail" document $text "$mail" -o "$work/document" 2>/dev/null || continue
    # A mail without plain text is HTML for --text as well.
    if [ "$ending" = txt ] && [ "$(head -c 5 "$work/document")" = "<html" ]; then continue; fi
    mv "$work/document" "$work/$number.$ending"
    [ "$ending" = html ] && [ ! -e "$work/mail" ] && cp "$mail" "$work/mail" && cp "$work/$number.html" "$work/first.page"
  done
done

# As many as take a few seconds.
declare -A times=([html]=1000 [txt]=1000 [rtf]=100)
for ending in html txt rtf; do
  files=("$work"/*."$ending")
  [ -e "${files[0]}" ] || continue
  printf '%s, %s documents\n' "$ending" "${#files[@]}"
  "$build/bench/PageBench" "$build" $((times[$ending] / ${#files[@]} + 1)) "${files[@]}"
done

# milliseconds COMMAND...: of one run.
milliseconds() {
  local start=${EPOCHREALTIME/[.,]/}
  "$@" >/dev/null 2>&1
  echo "$(((${EPOCHREALTIME/[.,]/} - start) / 1000))"
}

[ -e "$work/mail" ] || exit 0
chromium=$(command -v chromium || true)
mv "$work/first.page" "$work/first.html"
for _ in 1 2 3 4 5; do
  png=$(milliseconds "$build/tarnmail" pages "$work/mail" -o "$work/pages")
  pdf=$(milliseconds "$build/tarnmail" pages "$work/mail" --pdf -o "$work/mail.pdf")
  printf 'process: PNG %s ms, PDF %s ms' "$png" "$pdf"
  if [ -n "$chromium" ]; then
    print=$(milliseconds "$chromium" --headless --no-sandbox --disable-gpu --no-first-run \
      --disable-background-networking --user-data-dir="$work/profile" \
      --print-to-pdf="$work/chromium.pdf" "file://$work/first.html")
    printf ', Chromium %s ms, ratio %s' "$print" "$(awk -v a="$pdf" -v b="$print" 'BEGIN { printf "%.3f", a / (b + (b == 0)) }')"
  fi
  printf '\n'
done
