#!/usr/bin/env bash
# scripts/fuzz.sh [-j JOBS] [-t TARGET]... SECONDS [RANDOM_SEED]: runs the fuzz targets of the debug
# build, all or those named, each for that long, JOBS at a time (as many as there are processors), from
# the seeds in fuzz/seeds/ and the examples.
#
# Without a random seed every run in a fresh build tree takes the same way, as far as it gets in its
# time, so that one change is not tested by another way than the next; 0 takes a new way each time.
# What a target finds worth keeping stays in build/debug/fuzz/TARGET-corpus/, and the next run goes on
# from there: `scripts/fuzz.sh 3600 0` may be ended at any time and started again.
# scripts/minimise-seeds.sh makes seeds of it.
#
# A table at the end says what was done, and what all runs in this build tree have done together: that
# is kept in build/debug/fuzz/ledger.tsv. Findings stay in build/debug/fuzz/, are printed in base64, and
# end the run with 1. Inputs that take more than a second stay there too, as slow-unit-*.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
. "$root/scripts/common.sh"
. "$root/scripts/fuzz-targets.sh"
use_fast_temp_directory
# What fuzzing reaches is not what tests reach (scripts/coverage.sh).
export LLVM_PROFILE_FILE=/dev/null

usage() { say "usage: scripts/fuzz.sh [-j JOBS] [-t TARGET]... SECONDS [RANDOM_SEED]"; exit 2; }
jobs=$(nproc)
wanted=()
while getopts j:t: option; do
  case "$option" in
    j) jobs=$OPTARG ;;
    t) wanted+=("$OPTARG") ;;
    *) usage ;;
  esac
done
shift $((OPTIND - 1))
[ $# -ge 1 ] || usage
seconds=$1
seed=${2:-20260401}
[ ${#wanted[@]} -gt 0 ] || wanted=("${FUZZ_TARGETS[@]}")
ledger="$work/ledger.tsv"
# Slow inputs are chosen less often; which are slow is not the same in every run.
options=(-timeout=10 -report_slow_units=1 -rss_limit_mb=2048 -len_control=100)
[ "$seed" -ne 0 ] || options+=(-entropic_scale_per_exec_time=1)
mkdir -p "$work"

# What a target said last, and its input, for whoever does not have this machine's files.
show_finding() {
  local log=$1 input
  tail -n 60 "$log" >&2
  input=$(sed -n 's/.*Test unit written to //p' "$log")
  if [ -f "$input" ]; then base64 "$input" >&2; fi
}

# log_result TARGET FINDINGS: appends a line to the ledger: time of day, target, processor seconds,
# runs, edges, features, inputs kept, findings.
log_result() {
  local target=$1 findings=$2 log="$work/$1.log"
  awk -v target="$target" -v findings="$findings" -v now="$(date -u +%Y-%m-%dT%H:%M:%SZ)" '
    /^#[0-9]+\t.* cov: / {
      runs = substr($1, 2)
      for (i = 2; i < NF; i++) {
        if ($i == "cov:") edges = $(i + 1)
        if ($i == "ft:") features = $(i + 1)
        if ($i == "corp:") kept = $(i + 1)
      }
    }
    /^processor / { processor = $2 + $3 }
    /^stat::number_of_executed_units:/ { runs = $2 }
    END {
      sub("/.*", "", kept)
      printf "%s\t%s\t%.0f\t%d\t%d\t%d\t%d\t%d\n", now, target, processor, runs, edges, features, kept, findings
    }' "$log" >>"$ledger"
}

# Runs one target to its end.
run_target() {
  local target=$1 corpus="$work/$1-corpus" log="$work/$1.log" findings=0 sources=()
  mkdir -p "$corpus"
  fuzz_sources "$target"
  local TIMEFORMAT='processor %U %S'
  { time "$root/build/debug/tests/$target" "${options[@]}" -max_total_time="$seconds" -seed="$seed" \
    -max_len="${FUZZ_LARGEST[$target]:-1048576}" -dict="$root/fuzz/${FUZZ_DICTIONARY[$target]}" -artifact_prefix="$work/" -print_final_stats=1 \
    "$corpus" "${sources[@]}" 2>&1; } >"$log" 2>&1 || findings=1
  log_result "$target" "$findings"
  [ "$findings" -eq 0 ] && return 0
  show_finding "$log"
  return 1
}

# Of all runs since a line of the ledger: one line for each target.
print_table() {
  local since=$1
  tail -n "+$since" "$ledger" | awk -F '\t' '
    { seconds[$2] += $3; runs[$2] += $4; edges[$2] = $5; features[$2] = $6; kept[$2] = $7; found[$2] += $8 }
    END {
      for (t in runs) {
        printf "%-20s %10d %12d %8d %9d %8d %9d\n", t, seconds[t], runs[t], edges[t], features[t], kept[t], found[t]
      }
    }' | sort
}

# started: the ledger's first line of this run.
touch "$ledger"
started=$(($(wc -l <"$ledger") + 1))
write_seeds
failed=0
for target in "${wanted[@]}"; do
  [ -n "${FUZZ_DICTIONARY[$target]:-}" ] || { say "no target $target"; exit 2; }
  while [ "$(jobs -rp | wc -l)" -ge "$jobs" ]; do wait -n || failed=1; done
  say "fuzzing $target for $seconds s"
  run_target "$target" &
done
for job in $(jobs -p); do wait "$job" || failed=1; done

{
  printf '%-20s %10s %12s %8s %9s %8s %9s\n' target 'CPU s' runs edges features inputs findings
  print_table "$started"
  if [ "$started" -gt 1 ]; then
    echo "all runs in this build tree:"
    print_table 1
  fi
} >&2
exit "$failed"
