#!/usr/bin/env bash
# scripts/mutants.sh [--seed N] [--count N] [--folder src/eml] [--resume]: does some test fail when
# the code is wrong? Changes src/, or with --folder plain the archive commands, the pages and tarnmail,
# in one small way at a time, at a random sample of places, and runs the tests of the subsystem
# (tools/mutants/subsystems.txt) until one fails:
#
#   condition   a condition or an operand of && or || is negated
#   comparison  < is <=, > is >=, and back
#   literal     an integer is one more or one less
#   sign        + is -, and back
#   boolean     true is false, and back
#   statement   a call, an assignment, a jump or a return of nothing is left out
#   status      another name of the same enumeration
#
# A test that runs into its limit of time or memory counts as one that fails. What does not compile
# is no mutant, and another takes its place. Works on copies in build/mutants/, never on the
# checkout, and leaves a journal there, build/mutants/seed-N.jsonl. The figures and the survivors
# are printed at the end. A survivor gets a test, or an entry with the reason why nobody can tell it
# from the code in tools/mutants/equivalent.txt.
#
# Without other options it is seed 1 and 300 mutants, which take half an hour on two processors
# after a first build of ten minutes.
#
#   --resume      goes on from the journal
#   --survivors   tries again those that the journal has as survivors
#   --sanitizers  builds with AddressSanitizer and UndefinedBehaviorSanitizer; with --survivors, for
#                 what only they see
#   --summary     prints the figures of the journal alone
#   --workers N   so many mutants at a time, 2 without it
#   --check       does the tool find the places of its sample, and is the code of all equivalent
#                 mutants still there? Every run asks this first
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
. "$root/scripts/common.sh"
install_packages "${TARN_PACKAGES[@]}" ccache clang git libclang-rt-14-dev lld python3 \
  python3-clang-14
exec nice -n 4 /usr/bin/python3 "$root/tools/mutants/mutants.py" "$@"
