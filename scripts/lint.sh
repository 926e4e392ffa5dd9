#!/usr/bin/env bash
# scripts/lint.sh: is every source formatted by .clang-format and clean under .clang-tidy, and are the
# types right of what is Python and installed? Needs the packages clang-format, clang-tidy and mypy, and a
# configured debug build (cmake --preset debug), which is why clang-tidy does not read what is for Windows
# alone. Takes some minutes.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

mapfile -t sources < <(git ls-files '*.h' '*.c' '*.cpp')
clang-format --dry-run --Werror "${sources[@]}"
(cd plain/slurm && mypy --strict --cache-dir=/dev/null tarnslurm)

# Sources that tests compile too are read as those are, with their precompiled headers.
cmake --build --preset debug --target tarn_test_headers >/dev/null
mapfile -t units < <(git ls-files 'src/*.cpp' 'plain/*.cpp' 'fuzz/*.cpp' ':!:*/win32/*')
printf '%s\0' "${units[@]}" |
  xargs -0 -n 4 -P "$(nproc)" clang-tidy -p build/debug --quiet --warnings-as-errors='*'
