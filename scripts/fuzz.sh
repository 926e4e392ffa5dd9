#!/usr/bin/env bash
# scripts/fuzz.sh SECONDS: runs each fuzz target of the debug build for that long, from its seeds.
# Findings stay in build/debug/fuzz/ and end the run with 1.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
. "$root/scripts/common.sh"
use_fast_temp_directory
seconds=${1:?usage: scripts/fuzz.sh SECONDS}
work="$root/build/debug/fuzz"
mkdir -p "$work"

# fuzz TARGET DICTIONARY SEEDS
fuzz() {
  local target=$1 dictionary=$2 seeds=$3
  local corpus="$work/$target-corpus"
  mkdir -p "$corpus"
  printf 'fuzzing %s for %s s\n' "$target" "$seconds" >&2
  "$root/build/debug/tests/$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=4096 \
    -dict="$root/fuzz/$dictionary" -artifact_prefix="$work/" -print_final_stats=1 \
    "$corpus" "$root/$seeds" >"$work/$target.log" 2>&1 || { tail -n 60 "$work/$target.log" >&2; return 1; }
  grep -E 'stat::number_of_executed_units|stat::peak_rss_mb' "$work/$target.log" >&2
}

fuzz FuzzCompressedRtf rtf.dict examples/compressed-rtf
fuzz FuzzEmlRoad mail.dict examples
"$root/build/debug/tests/WritePstSeeds" "$work/pst-seeds"
fuzz FuzzPstStore pst.dict build/debug/fuzz/pst-seeds
fuzz FuzzRtfDocument rtf.dict examples/rtf
fuzz FuzzRtfFontTable rtf.dict examples/rtf
fuzz FuzzRtfToHtml rtf.dict examples/rtf-html
fuzz FuzzScrubHtmlBody rtf.dict examples/html-scrub
