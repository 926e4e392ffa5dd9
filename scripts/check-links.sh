#!/usr/bin/env bash
# scripts/check-links.sh FOLDER: does every link in the pages below FOLDER (*.md) lead somewhere?
#
# A link to the web is not followed. Any other names a file below FOLDER, and with "#" a heading of
# it. Code is not looked at. Names each dead link, one a line; exit status 0 when there is none.
set -euo pipefail
folder=$(realpath "$1")
export LC_ALL=C.UTF-8

# The page without code, in blocks or within a line.
text() { awk '/^ *```/ { code = !code; next } !code { gsub(/`[^`]*`/, ""); print }' "$1"; }

# What the links of a page name, one a line.
targets() { text "$1" | grep -oE '\]\([^)]+\)' | sed -E 's/^\]\(//; s/\)$//' || true; }

# The headings of a page as links name them.
headings() {
  awk '/^ *```/ { code = !code } !code && sub(/^#+ +/, "")' "$1" |
    sed -E 's/[^[:alnum:] _-]//g; s/ /-/g' | tr '[:upper:]' '[:lower:]'
}

dead=0
complain() { echo "${1#"$folder/"}: $2"; dead=1; }

pages=$(find "$folder" -name '*.md' | sort)
[ -n "$pages" ] || { echo "no pages in $folder"; exit 1; }
while IFS= read -r page; do
  while IFS= read -r target; do
    case $target in
      '' | http:* | https:* | mailto:*) continue ;;
    esac
    name=${target%%#*}
    file=$page
    [ -z "$name" ] || file=$(realpath -m "$(dirname "$page")/$name")
    if [ ! -e "$file" ] || [ "${file#"$folder/"}" = "$file" ]; then
      complain "$page" "$target"
    elif [ "$target" != "$name" ] && ! headings "$file" | grep -qxF -- "${target#*#}"; then
      complain "$page" "$target"
    fi
  done < <(targets "$page")
done <<<"$pages"
exit "$dead"
