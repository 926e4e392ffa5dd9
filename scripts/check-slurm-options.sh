#!/usr/bin/env bash
# scripts/check-slurm-options.sh TARNMAIL TARNMAIL_SLURM MANUAL COMPLETIONS: does tarnmail-slurm take
# what `tarnmail plan` takes, and do its manual page and its completions tell so?
#
# The options of the plan are those of `tarnmail plan --help`, but for its output, with a value where
# that has one. The manual page and the completions in the folder COMPLETIONS name every option of
# tarnmail-slurm, and no other; that for bash is run.
set -euo pipefail
tarnmail=$(realpath "$1")
slurm=$2
manual=$3
folder=$4
export LC_ALL=C

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
bad=0

# same WHAT EXPECTED ACTUAL: complains unless the two files hold the same lines.
same() {
  [ -s "$2" ] || { echo "$1: none found" >&2; bad=1; }
  diff -u --label "$1, expected" --label "$1, found" "$2" "$3" >&2 || bad=1
}

# options_of GROUP: those that the help of tarnmail-slurm lists below a title, as "-j,--jobs N".
options_of() {
  "$slurm" --help | sed -n "/^$1/,/^\$/p" |
    sed -nE -e 's/^  (-[A-Za-z])( [A-Z]+)?, (--[a-z-]+)( [A-Z]+)?.*/\1,\3\4/p' -e 's/^  (--[a-z-]+( [A-Z]+)?).*/\1/p'
}

# In the help of tarnmail, names of values may have something after them.
"$tarnmail" plan --help | sed -nE 's/^  (-[^ ]*( [A-Z]+)?) .*/\1/p' | grep -vE '^-(h|o),' | sort >"$work/plan"
options_of 'options of the plan' | sort >"$work/ours"
same "options of the plan" "$work/plan" "$work/ours"

{ options_of 'options:'; options_of 'options of the plan'; options_of 'options of sbatch'; } | sort >"$work/all"
awk '$1 == ".It" && $2 == "Fl" {
    sub(/^\.It /, ""); gsub(/Fl Fl /, "--"); gsub(/Fl /, "-"); gsub(/ , /, ","); gsub(/Ar /, ""); print
  }' "$manual" | sort >"$work/manual"
same "options in the manual" "$work/all" "$work/manual"
groff -mandoc -Tutf8 -ww "$manual" >/dev/null 2>"$work/warnings"
[ ! -s "$work/warnings" ] || { cat "$work/warnings" >&2; bad=1; }

sed -E 's/ [A-Z]+$//' "$work/all" | tr ',' '\n' | sort -u >"$work/names"
(
  source "$folder/tarnmail-slurm.bash"
  compopt() { :; }
  COMP_CWORD=1
  for word in -- $(sed -n '/^-.$/p' "$work/names"); do
    COMP_WORDS=(tarnmail-slurm "$word")
    _tarnmail_slurm
    printf '%s\n' "${COMPREPLY[@]}"
  done
) | sort -u >"$work/offered"
same "options in bash" "$work/names" "$work/offered"
# After an option with a value, no option is offered.
(
  source "$folder/tarnmail-slurm.bash"
  compopt() { :; }
  COMP_CWORD=2
  sed -nE 's/^(.*) [A-Z]+$/\1/p' "$work/all" | tr ',' '\n' | while read -r option; do
    COMP_WORDS=(tarnmail-slurm "$option" --)
    _tarnmail_slurm
    printf '%s\n' "${COMPREPLY[@]}" | sed -n "s/^-.*/$option &/p"
  done
) >"$work/after"
[ ! -s "$work/after" ] || { echo "bash offers options as values:" >&2; cat "$work/after" >&2; bad=1; }
grep -oP "(?<=[{',])(-[A-Za-z]|--[a-z-]+)(?=[,}\[])" "$folder/_tarnmail-slurm" | sort -u >"$work/offered"
same "options in zsh" "$work/names" "$work/offered"
{ sed -nE 's/^complete .* -s ([A-Za-z]) .*/-\1/p' "$folder/tarnmail-slurm.fish"
  sed -nE 's/^complete .* -l ([a-z-]+) .*/--\1/p' "$folder/tarnmail-slurm.fish"; } | sort -u >"$work/offered"
same "options in fish" "$work/names" "$work/offered"

exit "$bad"
