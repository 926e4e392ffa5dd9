#!/usr/bin/env bash
# scripts/lint.sh [--recent N]: is every source formatted by .clang-format, and clean under .clang-tidy and
# cppcheck, and are the types right of what is Python and installed? Needs the packages clang-format,
# clang-tidy, cppcheck and mypy. Reads sources as the debug build compiles them, which is why nothing
# reads what is for Windows alone. All sources together take an hour on two processors; --recent N takes
# the N that the last commits have changed. A header is read with the source of the same name, and
# counts as that.
#
# A finding that is none is answered in its place, by NOLINT or cppcheck-suppress and the reason.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
. "$root/scripts/common.sh"
cd "$root"
most=0
case "${1:-}" in
  "") ;;
  --recent) most=${2:?a number} ;;
  *) say "usage: scripts/lint.sh [--recent N]"; exit 2 ;;
esac

mapfile -t sources < <(git ls-files '*.h' '*.c' '*.cpp')
clang-format --dry-run --Werror "${sources[@]}"
(cd plain/slurm && mypy --strict --cache-dir=/dev/null tarnslurm)

mapfile -t units < <(git ls-files 'src/*.cpp' 'plain/*.cpp' 'fuzz/*.cpp' ':!:*/win32/*')
if [ "$most" -gt 0 ]; then
  # Changed files, the last ones first, as long as they are there.
  mapfile -t units < <(
    { printf '%s\n' "${units[@]}"; echo; git log --format= --name-only; } | awk -v most="$most" '
      !isList && $0 == "" { isList = 1; next }
      !isList { unit[$0] = 1; next }
      { sub(/\.h$/, ".cpp") }
      unit[$0] && !seen[$0]++ && count++ < most')
  say "the ${#units[@]} sources that were changed last"
fi

# The performance of its list is what clang-tidy looks at, with fewer mistakes. It takes a text of the
# caller for gone.
cppcheck --std=c++20 --enable=warning,portability --inline-suppr --error-exitcode=1 --quiet \
  -j "$(nproc)" -I plain -I src -I Include \
  --suppress=invalidLifetime:plain/archive/catalogue/GatheredWords.cpp \
  "${units[@]}"

# A build of which only its list of commands is used, one for each source. Sources that tests compile
# too are read as those are, with their precompiled headers.
{ cmake --preset debug -B build/lint -DTARN_UNITY=OFF
  cmake --build build/lint --target tarn_test_headers; } >/dev/null
printf '%s\0' "${units[@]}" |
  xargs -0 -n 4 -P "$(nproc)" clang-tidy -p build/lint --quiet --warnings-as-errors='*'
