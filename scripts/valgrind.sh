#!/usr/bin/env bash
# scripts/valgrind.sh [FOLDER]: valgrind's memcheck over every call of the exports of the release
# build, in English, up to three messages a store. It ends with 1 when memory is used that does not
# belong to the filter, when a decision depends on a byte that nobody has set, or when such a byte
# is in an answer: the answers themselves are written, and memcheck looks at what is written.
#
# Without a folder: the examples, the files that tests make, those that fuzzing starts from, every
# tenth of the seeds that fuzzing has left, and, with MAIL_CORPUS, a sample of the corpus, every other
# file up to 1 MB; and memcheck over list, show and export of the archive commands, with the processes
# that they start, for the examples and the files that tests make.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
. "$root/scripts/common.sh"
install_packages "${TARN_PACKAGES[@]}" "${TARN_MORE_PACKAGES[@]}"
build_preset release DumpAnswers WriteSeeds
use_fast_temp_directory

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# check FOLDER FILE...: one run over these files. A line of "usage" after a report names the file and
# the variant whose calls it was about. What is left behind is for the dumps and the tests to tell.
check() {
  local log status=0
  log=$(mktemp -p "$work")
  valgrind --quiet --error-exitcode=9 --leak-check=no --track-origins=yes --num-callers=30 \
    "$root/build/release/tests/DumpAnswers" --languages 1 --messages 3 --raw /dev/null "$@" \
    >"$log" 2>&1 || status=$?
  if [ "$status" -ne 0 ]; then
    awk '/^==/ { reported = 1 } reported && shown++ < 200' "$log" >&2
    say "valgrind over $1: status $status"
    return 1
  fi
  say "valgrind over $1: $(tail -n 1 "$log")"
}

# check_in_parts FOLDER FILE...: as many runs at once as there are processors, each over its share.
failed=0
check_in_parts() {
  local folder=$1 parts part i
  shift
  parts=$(nproc)
  for ((part = 0; part < parts; part++)); do
    local names=()
    for ((i = part + 1; i <= $#; i += parts)); do names+=("${!i}"); done
    [ ${#names[@]} -eq 0 ] || check "$folder" "${names[@]}" &
  done
  local job
  for job in $(jobs -p); do wait "$job" || failed=1; done
}

# files_of FOLDER [FIND_OPTION...]: the names of its files, as NUL-terminated words.
files_of() {
  local folder=$1
  shift
  (cd "$folder" && find . -type f "$@" -printf '%P\0' | LC_ALL=C sort -z)
}

# check_archive NAME ARGUMENT...: one archive command. Refused files are its affair, errors are not.
check_archive() {
  local name=$1 status=0
  shift
  valgrind --quiet --error-exitcode=9 --leak-check=no --trace-children=yes \
    --trace-children-skip='*/pdftotext' --suppressions="$root/scripts/valgrind.supp" --num-callers=30 \
    --log-file="$work/$name.%p.log" \
    "$root/build/release/tarnmail-archive" "$@" >"$work/$name.out" 2>&1 || status=$?
  # That of a process of an export is in its log alone.
  if [ "$status" -gt 1 ] || grep -qs '^==.*== ' "$work/$name".*.log; then
    cat "$work/$name".*.log "$work/$name.out" 2>/dev/null | head -n 200 >&2
    say "valgrind over tarnmail $*: status $status"
    return 1
  fi
}

check_archives() {
  local folder="$work/archives" since=$SECONDS job number=0 id file
  mkdir -p "$folder"
  "$root/build/release/tests/WriteSeeds" "$folder/built"
  cp -r "$root"/examples/*.eml "$root/examples/mailbox.pst" "$root/examples/msg" "$folder"
  check_archive list list --json "$folder" &
  check_archive export export "$folder" -o "$work/exported" --to html,text,eml,mbox,json &
  for job in $(jobs -p); do wait "$job" || failed=1; done
  for file in "$folder"/*.eml "$folder"/msg/*.msg; do
    number=$((number + 1))
    check_archive "show$number" show "$file" || failed=1
  done
  for id in $("$root/build/release/tarnmail-archive" list "$folder/mailbox.pst" | cut -f 1); do
    check_archive "show$id" show "$folder/mailbox.pst" "$id" || failed=1
  done
  say "valgrind over list, show and export: $((SECONDS - since)) s"
}

if [ $# -ge 1 ]; then
  [ -d "$1" ] || { say "$1 is no folder"; exit 2; }
  mapfile -d '' -t names < <(files_of "$1")
  check_in_parts "$(realpath "$1")" "${names[@]}"
else
  if [ -x "$root/build/release/tarnmail-archive" ]; then check_archives; fi
  "$root/scripts/dump-inputs.sh" "$work/inputs"
  find "$work/inputs/seeds" -type f | LC_ALL=C sort | awk 'NR % 10 != 1' | xargs -d '\n' rm --
  mapfile -d '' -t names < <(files_of "$work/inputs")
  check_in_parts "$work/inputs" - "${names[@]}"
  if [ -n "${MAIL_CORPUS:-}" ]; then
    mapfile -d '' -t names < <(files_of "$MAIL_CORPUS" -size -1025k)
    sample=()
    for ((i = 0; i < ${#names[@]}; i += 2)); do sample+=("${names[i]}"); done
    check_in_parts "$(realpath "$MAIL_CORPUS")" "${sample[@]}"
  fi
fi
exit "$failed"
