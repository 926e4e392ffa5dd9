#!/usr/bin/env bash
# scripts/threads.sh: runs what has to do with threads in a build with ThreadSanitizer: many calls of
# the exports at once, and the tests of the kernel and of the platform that share what these keep
# for the whole process. Any race ends the run with 1.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
. "$root/scripts/common.sh"
install_packages "${TARN_PACKAGES[@]}" "${TARN_MORE_PACKAGES[@]}"
use_fast_temp_directory

say "building threads"
build_preset threads ThreadTests KernelThreadTests PlatformTests
export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1

# run BINARY FILTER: the tests that the filter names, of which there must be some.
run() {
  local binary=$1 filter=$2 log status=0
  log=$(mktemp)
  "$root/build/threads/tests/$binary" --gtest_brief=1 --gtest_filter="$filter" >"$log" 2>&1 || status=$?
  if [ "$status" -ne 0 ] || grep -qF '0 tests from' "$log"; then
    cat "$log" >&2
    say "$binary $filter: failed"
    rm -f "$log"
    return 1
  fi
  say "$binary: $(sed -nE 's/^\[  PASSED  \] ([0-9]+) tests?\.$/\1 passed/p' "$log")"
  rm -f "$log"
}

run ThreadTests '*'
run KernelThreadTests '*'
run PlatformTests '*Thread*'
