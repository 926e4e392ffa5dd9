#!/usr/bin/env bash
# scripts/check-manual.sh TARNMAIL MANUAL EXAMPLES: does the manual page tell the truth?
#
# Its commands and options are those of `tarnmail --help` and of each command's help, no more and no
# fewer; its examples, run on the folder EXAMPLES, print what stands below them; and it is formatted
# without a warning.
set -euo pipefail
tarnmail=$(realpath "$1")
manual=$(realpath "$2")
examples=$(realpath "$3")
export LC_ALL=C TZ=UTC

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
bad=0

# same WHAT EXPECTED ACTUAL: complains unless the two files hold the same lines.
same() {
  diff -u --label "$1, of the program" --label "$1, of the manual" "$2" "$3" >&2 || bad=1
}

# The options of a help text, as "-m,--message N".
help_options() { "$tarnmail" "$@" --help | sed -nE 's/^  (-[^ ]*( [A-Z]+)?) .*/\1/p' | sort -u; }

# manual_lists KIND NAME: the options that the manual lists in a section (Sh) or a command (Ss).
manual_lists() {
  awk -v kind=".$1" -v name="$2" '
    $1 == ".Sh" || $1 == kind { inside = ($1 == kind && $2 == name) }
    inside && $1 == ".It" && $2 == "Fl" {
      line = $0
      sub(/^\.It /, "", line)
      gsub(/Fl Fl /, "--", line)
      gsub(/Fl /, "-", line)
      gsub(/ , /, ",", line)
      gsub(/Ar /, "", line)
      print line
    }' "$manual" | sort -u
}

# commands_of GROUP: the commands that the help lists below a title.
commands_of() { "$tarnmail" --help | sed -n "/^$1:/,/^\$/s/^  \([a-z-]*\) .*/\1/p"; }

# Those of archives take no options of the others.
commands_of "Archive commands" >"$work/archive"
[ -s "$work/archive" ] || { echo "no archive commands found" >&2; exit 1; }
{ commands_of Subcommands; cat "$work/archive"; } | sort >"$work/commands"
[ -s "$work/commands" ] || { echo "no commands found" >&2; exit 1; }
awk '$1 == ".Sh" { inside = ($2 == "COMMANDS") } inside && $1 == ".Ss" { print $2 }' "$manual" |
  sort >"$work/manual"
same "commands" "$work/commands" "$work/manual"

help_options >"$work/common"
[ -s "$work/common" ] || { echo "no options found" >&2; exit 1; }
manual_lists Sh OPTIONS >"$work/manual"
same "common options" "$work/common" "$work/manual"
while read -r command; do
  help_options "$command" >"$work/options"
  # Of those that stand in the front, help and the archive commands take their own alone.
  not_common='^-V,--version$'
  if [ "$command" = help ] || grep -qx "$command" "$work/archive"; then not_common='^(-V|--).*$'; fi
  { manual_lists Ss "$command"; grep -vE -e "$not_common" "$work/common"; } | sort -u >"$work/manual"
  same "options of $command" "$work/options" "$work/manual"
done <"$work/commands"

# The examples: lines that begin with "$ " are run, the others are what these print.
awk '/^\.Bd -literal/ { inside = 1; next } /^\.Ed/ { inside = 0 } inside' "$manual" |
  sed -e 's/\\e/\\/g' -e 's/^\\&//' >"$work/session"
mkdir "$work/bin" "$work/files"
ln -s "$tarnmail" "$work/bin/tarnmail"
cp -R "$examples/." "$work/files"
grep -q '^\$ ' "$work/session" || { echo "no examples found" >&2; exit 1; }
while IFS= read -r line; do
  printf '%s\n' "$line"
  (cd "$work/files" && PATH="$work/bin:$PATH" bash -c "${line#\$ }" 2>&1) || true
done < <(grep '^\$ ' "$work/session") >"$work/printed"
same "examples" "$work/printed" "$work/session"

groff -mandoc -Tutf8 -ww "$manual" >/dev/null 2>"$work/warnings"
: >"$work/nothing"
same "warnings of groff" "$work/nothing" "$work/warnings"

exit "$bad"
