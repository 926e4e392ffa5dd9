#!/usr/bin/env bash
# scripts/minimise-seeds.sh [TARGET...]: makes the seeds in fuzz/seeds/ anew out of themselves and of
# what fuzzing has found in this build tree (build/debug/fuzz/TARGET-corpus/), for all targets or those
# named. Kept are the fewest small inputs that reach every edge of the code that small inputs reach:
# larger ones are left to the next run, which finds them again.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
. "$root/scripts/common.sh"
. "$root/scripts/fuzz-targets.sh"
use_fast_temp_directory
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=("${FUZZ_TARGETS[@]}")

# The largest input kept, in bytes: a store or compound file is not much smaller.
largest() {
  case "$1" in
    FuzzPst* | FuzzMsg* | FuzzEmb* | FuzzCompoundFile) echo 6000 ;;
    FuzzEmlRoad) echo 3000 ;;
    *) echo 800 ;;
  esac
}

write_seeds
for target in "${targets[@]}"; do
  [ -n "${FUZZ_DICTIONARY[$target]:-}" ] || { say "no target $target"; exit 2; }
  small=$(mktemp -d)
  kept=$(mktemp -d)
  fuzz_sources "$target"
  for folder in "${sources[@]}" "$work/$target-corpus"; do
    [ -d "$folder" ] || continue
    find "$folder" -maxdepth 1 -type f -size "-$(largest "$target")c" -exec cp -t "$small" {} +
  done
  "$root/build/debug/tests/$target" -merge=1 -set_cover_merge=1 -use_counters=0 -timeout=10 -rss_limit_mb=2048 \
    "$kept" "$small" >"$work/$target-merge.log" 2>&1 || { tail -n 30 "$work/$target-merge.log" >&2; exit 1; }
  rm -rf "$root/fuzz/seeds/$target"
  mkdir -p "$root/fuzz/seeds/$target"
  find "$kept" -type f -exec mv -t "$root/fuzz/seeds/$target" {} +
  rm -rf "$small" "$kept"
  say "$target: $(find "$root/fuzz/seeds/$target" -type f | wc -l) seeds, $(du -bs "$root/fuzz/seeds/$target" | cut -f1) bytes"
done
