#!/usr/bin/env bash
# scripts/endurance.sh [--small] [BUILD]: what a long life and a large store cost: nothing that grows.
#
# - 100,000 mails, MSG files and stores, no two the same, through the filter in one process: blocks,
#   objects, handles, temporary files and memory are at the end what they were after the first tenth.
# - A store of 10 GB of 100,000 messages, spread over its file by empty pages of which the disk holds
#   little: the filter gives the document of its last message; all are listed, the last attachment is
#   shown; a tenth of the messages is exported, killed, resumed and checked. Memory is that of a store
#   with a tenth of the messages, but for what is told in docs/limits.md.
#
# --small: 2,000 mails, and a store of 5 GB with 2,000 messages, without the export: its last blocks and
# the roots of its trees are beyond what 32 bits count. BUILD is the folder with the programs, build/release unless
# named. Prints the numbers; ends with 1 at the first that is wrong. What it makes is in the folder of
# temporary files, and gone at the end.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
. "$root/scripts/common.sh"

small=0
mails=100000
messages=100000
bytes=10000000000
if [ "${1:-}" = --small ]; then
  small=1
  mails=2000
  messages=2000
  bytes=5000000000
  shift
fi
build=${1:-$root/build/release}
[ $# -gt 0 ] || build_preset release FilterEndurance MakeSparseStore tarnmail tarnmail-archive
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
tarnmail=$build/tarnmail

fail() { say "endurance: $*"; exit 1; }
since=$SECONDS
took() { say "  $1: $((SECONDS - since)) s"; since=$SECONDS; }

# peak_of COMMAND...: runs it with its output in $work/answer; the most memory that a process of it had,
# in KB.
peak_of() {
  python3 - "$work/answer" "$@" <<'PYTHON'
import os, sys

answer = os.open(sys.argv[1], os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o600)
child = os.fork()
if child == 0:
    os.dup2(answer, 1)
    os.execv(sys.argv[2], sys.argv[2:])
_, status, usage = os.wait4(child, 0)
if os.waitstatus_to_exitcode(status) != 0:
    sys.exit("%s ended with %d" % (" ".join(sys.argv[2:]), os.waitstatus_to_exitcode(status)))
print(usage.ru_maxrss)
PYTHON
}

# expect_flat WHAT FEW MANY ALLOWED: MANY is no more than FEW and what is allowed beside it.
expect_flat() {
  say "  $1: $2 KB of a tenth, $3 KB of all"
  [ "$3" -le $(($2 + $4)) ] || fail "$1 takes more memory the more messages there are"
}

say "$mails mails through one process of the filter"
"$build/tests/FilterEndurance" "$mails" >&2 || fail "something grows"
took "mails"

tenth=$((messages / 10))
"$build/tests/MakeSparseStore" "$work/tenth.pst" "$tenth" $((bytes / 10))
"$build/tests/MakeSparseStore" "$work/all.pst" "$messages" "$bytes"
size=$(stat -c %s "$work/all.pst")
[ "$size" -ge "$bytes" ] || fail "the store has only $size bytes"
say "$messages messages in $size bytes, $(du -k "$work/all.pst" | cut -f 1) KB of them on the disk"
took "made"

# The document of the last message. The pages of the store's trees stay in memory while it is open.
few=$(peak_of "$tarnmail" document -m "$tenth" "$work/tenth.pst")
many=$(peak_of "$tarnmail" document -m "$messages" "$work/all.pst")
grep -qF "Body $((messages - 1))" "$work/answer" || fail "the last document is another one"
expect_flat "last document" "$few" "$many" $((messages / 2 + 4096))
took "document"

# The list.
few=$(peak_of "$tarnmail" list "$work/tenth.pst")
many=$(peak_of "$tarnmail" list "$work/all.pst")
[ "$(wc -l <"$work/answer")" -eq "$messages" ] || fail "the list has not all messages"
[ "$(cut -f 5 "$work/answer" | sort -u | wc -l)" -eq "$messages" ] || fail "messages are listed twice"
expect_flat "list" "$few" "$many" 4096
took "list"

# One message by its id, and what is attached to the last.
id=$(tail -n 1 "$work/answer" | cut -f 1)
[ "$("$tarnmail" show "$work/all.pst" "$id" --attachment 1)" = "attached to $((messages - 1))" ] ||
  fail "the last attachment is another one"
took "attachment"
[ "$small" -eq 0 ] || exit 0

# A part of it, as many messages as the tenth has. Killed when the first of them are there.
export=("$tarnmail" export "$work/all.pst" -o "$work/out" --to text,eml -j 2 --folder "Folder *7")
"${export[@]}" 2>/dev/null &
exporter=$!
until [ -n "$(find "$work/out" -name message.eml -not -path '*/.tarn-staging/*' -print -quit 2>/dev/null)" ]; do
  kill -0 "$exporter" 2>/dev/null || fail "the export ended before it was killed"
  sleep 0.05
done
kill -KILL "$exporter"
wait "$exporter" && fail "the export ended before it was killed"
[ ! -e "$work/out/manifest.jsonl" ] || fail "the export was done before it was killed"
took "export until it was killed"
few=$(peak_of "$tarnmail" export "$work/tenth.pst" -o "$work/few" --to text,eml -j 2)
many=$(peak_of "${export[@]}" --resume)
expect_flat "export" "$few" "$many" $((messages / 2 + 8192))
exported=$(grep -c '"status":"exported"' "$work/out/manifest.jsonl")
[ "$exported" -eq "$tenth" ] || fail "$exported messages are exported"
took "export"
"$tarnmail" verify "$work/out" >&2 || fail "the export is not as its manifest says"
took "verify"
