#!/usr/bin/env bash
# scripts/lint.sh: is every source formatted by .clang-format and clean under .clang-tidy? Needs the
# packages clang-format and clang-tidy, and the debug build's compile commands (cmake --preset debug).
# Takes some minutes.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

mapfile -t sources < <(git ls-files '*.h' '*.c' '*.cpp')
clang-format --dry-run --Werror "${sources[@]}"

mapfile -t units < <(git ls-files 'src/*.cpp' 'plain/*.cpp' 'fuzz/*.cpp')
printf '%s\0' "${units[@]}" |
  xargs -0 -n 4 -P "$(nproc)" clang-tidy -p build/debug --quiet --warnings-as-errors='*'
