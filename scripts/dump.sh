#!/usr/bin/env bash
# scripts/dump.sh FOLDER OUT [PRESET [OPTION...]]: writes to OUT, a line a call, everything that the
# exports of a build answer for every file below the folder. Two builds are compared with `diff` of
# their OUTs; lines of "usage" say what the calls took, and a change of the code may change them:
#
#   scripts/dump-inputs.sh /tmp/inputs
#   scripts/dump.sh /tmp/inputs /tmp/before.txt
#   ... change, or check out another commit ...
#   scripts/dump.sh /tmp/inputs /tmp/after.txt
#   diff <(grep -v ^usage /tmp/before.txt) <(grep -v ^usage /tmp/after.txt)
#
# To look into a difference: build/release/tests/DumpAnswers --raw OUT FOLDER FILE writes the answers'
# bytes themselves. OPTION is an option of DumpAnswers, such as --languages 1.
#
# Each file has a process of its own. One that crashes, or takes longer than ten minutes, gets a line
# "died" after what it had answered; then the exit status is 1.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
. "$root/scripts/common.sh"
[ $# -ge 2 ] || { say "usage: scripts/dump.sh FOLDER OUT [PRESET [OPTION...]]"; exit 2; }
[ -d "$1" ] || { say "$1 is no folder"; exit 2; }
folder=$(realpath "$1")
out=$2
[ ! -d "$out" ] || { say "$out is a folder; OUT is the file to write"; exit 2; }
preset=${3:-release}
shift $(($# < 3 ? 2 : 3))
options=("$@")

install_packages "${TARN_PACKAGES[@]}"
build_preset "$preset" DumpAnswers
use_fast_temp_directory
program="$root/build/$preset/tests/DumpAnswers"
# What a failing list leaves behind is stated, and told by lines of "left".
export ASAN_OPTIONS=detect_leaks=0

parts=$(mktemp -d)
trap 'rm -rf "$parts"' EXIT

# dump_file NAME PART: what a file answers, or how far it came.
dump_file() {
  local name=$1 part=$2 status=0
  timeout 600 "$program" "${options[@]}" "$folder" "$name" >"$part" 2>"$part.log" || status=$?
  [ "$status" -eq 0 ] && return
  printf 'died\t%s\twith status %s\n' "$name" "$status" >>"$part"
  say "$name died with status $status"
  tail -n 40 "$part.log" >&2
  touch "$parts/died"
}

mapfile -d '' -t names < <(cd "$folder" && find . -type f -printf '%P\0' | LC_ALL=C sort -z)
number=0
# "-": the calls that no file plays a part in.
for name in - "${names[@]}"; do
  while [ "$(jobs -rp | wc -l)" -ge "$(nproc)" ]; do wait -n || true; done
  number=$((number + 1))
  dump_file "$name" "$parts/$(printf '%08d' "$number").txt" &
done
wait
find "$parts" -name '*.txt' -print0 | LC_ALL=C sort -z | xargs -0r cat >"$out"
say "$(wc -l <"$out") lines on ${#names[@]} files in $out"
[ ! -e "$parts/died" ]
