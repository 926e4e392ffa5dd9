#!/usr/bin/env bash
# scripts/minimise-seeds.sh [TARGET...]: makes the seeds in fuzz/seeds/ anew out of themselves and of
# what fuzzing has found in this build tree (build/debug/fuzz/TARGET-corpus/), for all targets or those
# named. Kept are few small inputs that reach every edge of the code which small inputs reach and the
# examples do not. Larger ones are left to the next run, which finds them again.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
. "$root/scripts/common.sh"
. "$root/scripts/fuzz-targets.sh"
use_fast_temp_directory
export LLVM_PROFILE_FILE=/dev/null
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=("${FUZZ_TARGETS[@]}")

# The largest input kept, in bytes: a store or compound file is not much smaller.
largest() {
  case "$1" in
    FuzzPst* | FuzzMsg* | FuzzEmb* | FuzzCompoundFile) echo 4200 ;;
    FuzzEmlRoad) echo 2000 ;;
    *) echo 800 ;;
  esac
}

# minimise TARGET: what the other sources have is there already, and is taken out again in the end.
minimise() {
  local target=$1 found given kept seeds="$root/fuzz/seeds/$1" folder file
  found=$(mktemp -d)
  given=$(mktemp -d)
  kept=$(mktemp -d)
  fuzz_sources "$target"
  for folder in "${sources[@]}"; do
    if [ "$folder" != "$seeds" ]; then find "$folder" -maxdepth 1 -type f -exec cp -t "$given" {} +; fi
  done
  for folder in "$seeds" "$work/$target-corpus"; do
    [ -d "$folder" ] || continue
    find "$folder" -maxdepth 1 -type f -size "-$(largest "$target")c" -exec cp -t "$found" {} +
  done
  find "$given" -type f -exec cp -t "$kept" {} +
  "$root/build/debug/tests/$target" -merge=1 -set_cover_merge=1 -use_counters=0 -timeout=10 -rss_limit_mb=2048 \
    "$kept" "$found" >"$work/$target-merge.log" 2>&1 || { tail -n 30 "$work/$target-merge.log" >&2; exit 1; }
  for file in "$given"/*; do rm -f "$kept/$(basename "$file")"; done
  rm -rf "$seeds"
  mkdir -p "$seeds"
  find "$kept" -type f -exec mv -t "$seeds" {} +
  rm -rf "$found" "$given" "$kept"
  say "$target: $(find "$seeds" -type f | wc -l) seeds, $(du -bs "$seeds" | cut -f1) bytes"
}

write_seeds
for target in "${targets[@]}"; do
  [ -n "${FUZZ_DICTIONARY[$target]:-}" ] || { say "no target $target"; exit 2; }
  minimise "$target"
done
