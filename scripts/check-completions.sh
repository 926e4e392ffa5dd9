#!/usr/bin/env bash
# scripts/check-completions.sh TARNMAIL FOLDER: do the completions in FOLDER offer what the program
# takes?
#
# In bash the completion is run: after each command, and before any, it must offer the commands and
# options of `tarnmail --help` and of the command's help, no more and no fewer. Those for zsh and fish
# are run alike where the shells are installed; everywhere their texts must name the same commands
# and options.
set -euo pipefail
tarnmail=$(realpath "$1")
folder=$(realpath "$2")
export LC_ALL=C

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
bad=0

# same WHAT EXPECTED ACTUAL: complains unless the two files hold the same lines.
same() {
  diff -u --label "$1, of the program" --label "$1, of the completion" "$2" "$3" >&2 || bad=1
}

# commands_of GROUP: the commands that the help lists below a title.
commands_of() { "$tarnmail" --help | sed -n "/^$1:/,/^\$/s/^  \([a-z-]*\) .*/\1/p"; }
help_commands() { { commands_of Subcommands; commands_of "Archive commands"; } | sort; }
# The options of a help text, one name a line.
help_options() {
  "$tarnmail" "$@" --help | sed -nE 's/^  (-[^ ]*).*/\1/p' | tr ',' '\n' | sort -u
}

# bash_offers WORD...: what bash offers for the last of the words.
bash_offers() (
  source "$folder/tarnmail.bash"
  compopt() { :; }
  COMP_WORDS=(tarnmail "$@")
  COMP_CWORD=$#
  _tarnmail
  printf '%s\n' "${COMPREPLY[@]}" | sed '/^$/d' | sort
)

help_commands >"$work/commands"
[ -s "$work/commands" ] || { echo "no commands found" >&2; exit 1; }
bash_offers '' >"$work/offered"
same "commands in bash" "$work/commands" "$work/offered"
bash_offers help '' >"$work/offered"
same "topics of help in bash" "$work/commands" "$work/offered"

help_options >"$work/options"
{ bash_offers -h; bash_offers -V; bash_offers --; } | sort -u >"$work/offered"
same "options in bash" "$work/options" "$work/offered"
cp "$work/options" "$work/all"
while read -r command; do
  help_options "$command" >"$work/options"
  cat "$work/options" >>"$work/all"
  sed -n '/^-.$/p' "$work/options" >"$work/short"
  { while read -r option; do bash_offers "$command" "$option"; done <"$work/short"
    bash_offers --language 1031 "$command" --; } | sort -u >"$work/offered"
  same "options of $command in bash" "$work/options" "$work/offered"
done <"$work/commands"
sort -u "$work/all" -o "$work/all"

# The texts of the other two name each command and each option.
sed -nE "/^  commands=\(/,/^  \)/s/^    '([a-z-]+):.*/\1/p" "$folder/_tarnmail" | sort >"$work/named"
same "commands in zsh" "$work/commands" "$work/named"
grep -oP "(?<=[{'),])(-[A-Za-z]|--[a-z-]+)(?=[,}\[])" "$folder/_tarnmail" | sort -u >"$work/named"
same "options in zsh" "$work/all" "$work/named"

sed -nE 's/.* -a ([a-z-]+) -d .*/\1/p' "$folder/tarnmail.fish" | sort >"$work/named"
same "commands in fish" "$work/commands" "$work/named"
{ sed -nE 's/^complete .* -s ([A-Za-z]) .*/-\1/p' "$folder/tarnmail.fish"
  sed -nE 's/^complete .* -l ([a-z-]+) .*/--\1/p' "$folder/tarnmail.fish"; } | sort -u >"$work/named"
same "options in fish" "$work/all" "$work/named"

# fish can be asked.
if command -v fish >/dev/null; then
  while read -r command; do
    help_options "$command" | sed -n '/^--/p' >"$work/options"
    fish --no-config -c "source '$folder/tarnmail.fish'; complete -C 'tarnmail $command --'" |
      cut -f1 | sort -u >"$work/offered"
    same "options of $command in fish" "$work/options" "$work/offered"
  done <"$work/commands"
fi
if command -v zsh >/dev/null; then
  zsh -n "$folder/_tarnmail" || bad=1
fi

exit "$bad"
