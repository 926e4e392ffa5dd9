#!/usr/bin/env bash
# scripts/valgrind.sh [FOLDER]: valgrind's memcheck over every call of the exports of the release
# build, in English, up to three messages a store. It ends with 1 when memory is used that does not
# belong to the filter, when a decision depends on a byte that nobody has set, or when such a byte
# is in an answer: the answers themselves are written, and memcheck looks at what is written.
#
# Without a folder: the examples, the files that tests make, those that fuzzing starts from, every
# tenth of the seeds that fuzzing has left, and, with MAIL_CORPUS, a sample of the corpus, every other
# file up to 1 MB.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
. "$root/scripts/common.sh"
install_packages "${TARN_PACKAGES[@]}" "${TARN_MORE_PACKAGES[@]}"
build_preset release DumpAnswers
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

if [ $# -ge 1 ]; then
  [ -d "$1" ] || { say "$1 is no folder"; exit 2; }
  mapfile -d '' -t names < <(files_of "$1")
  check_in_parts "$(realpath "$1")" "${names[@]}"
else
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
