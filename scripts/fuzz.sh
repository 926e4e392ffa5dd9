#!/usr/bin/env bash
# scripts/fuzz.sh SECONDS [RANDOM_SEED]: runs each fuzz target of the debug build for that long, from
# its checked-in inputs. Without a random seed every run in a fresh build tree takes the same way, as far
# as it gets in its time, so that one change is not tested by another way than the next; 0 takes a
# new way each time. Findings stay in build/debug/fuzz/, are printed in base64, and end the run with 1.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
. "$root/scripts/common.sh"
use_fast_temp_directory
seconds=${1:?usage: scripts/fuzz.sh SECONDS [RANDOM_SEED]}
seed=${2:-20260401}
work="$root/build/debug/fuzz"
mkdir -p "$work"

# What a target said last, and its input, for whoever does not have this machine's files.
show_finding() {
  local log=$1 input
  tail -n 60 "$log" >&2
  input=$(sed -n 's/.*Test unit written to //p' "$log")
  if [ -f "$input" ]; then base64 "$input" >&2; fi
}

# Runs one target to its end.
run_target() {
  local target=$1 dictionary=$2 seeds=$3
  local corpus="$work/$target-corpus"
  mkdir -p "$corpus"
  "$root/build/debug/tests/$target" -max_total_time="$seconds" -seed="$seed" -timeout=10 \
    -rss_limit_mb=2048 -max_len=8192 -dict="$root/fuzz/$dictionary" -artifact_prefix="$work/" -print_final_stats=1 \
    "$corpus" "$root/$seeds" >"$work/$target.log" 2>&1 || { show_finding "$work/$target.log"; return 1; }
  printf '%s: %s runs\n' "$target" "$(sed -n 's/^stat::number_of_executed_units: *//p' "$work/$target.log")" >&2
}

# fuzz TARGET DICTIONARY SEEDS: starts a target as soon as a processor is free.
failed=0
fuzz() {
  while [ "$(jobs -rp | wc -l)" -ge "$(nproc)" ]; do wait -n || failed=1; done
  printf 'fuzzing %s for %s s\n' "$1" "$seconds" >&2
  run_target "$@" &
}

fuzz FuzzCompoundFile compound.dict examples/compound
fuzz FuzzCompressedRtf rtf.dict examples/compressed-rtf
fuzz FuzzEmbeddedExport msg.dict examples/msg
fuzz FuzzEmlRoad mail.dict examples
fuzz FuzzImagePass images.dict examples/body-images
fuzz FuzzMsgRoad msg.dict examples/msg
"$root/build/debug/tests/WritePstSeeds" "$work/pst-seeds"
fuzz FuzzPstRoad pst.dict build/debug/fuzz/pst-seeds
fuzz FuzzPstStore pst.dict build/debug/fuzz/pst-seeds
fuzz FuzzRtfDocument rtf.dict examples/rtf
fuzz FuzzRtfFontTable rtf.dict examples/rtf
fuzz FuzzRtfToHtml rtf.dict examples/rtf-html
fuzz FuzzScrubHtmlBody rtf.dict examples/html-scrub

for job in $(jobs -p); do wait "$job" || failed=1; done
exit "$failed"
