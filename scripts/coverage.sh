#!/usr/bin/env bash
# scripts/coverage.sh [--of-last-run]: how many lines and branches the tests reach of the filter, the plain
# kernel, the archive library, the pages and the command line, a folder a line. Builds the debug preset
# and runs its tests first; --of-last-run takes what the last run of those tests has left. Fails when one
# of the five is below its floor. The floors of filter and kernel are what the tests reached when this was
# last looked at, less what hangs on the processor and on which of two threads is first.
#
# build/debug/coverage/ then has report.txt with every file, left.txt with every line and branch that no
# test reaches, and html/ to look at. docs/coverage.md says why those are left.
#
# A branch is one outcome of one condition in the source: exceptions and the sanitizers' own checks
# are none. Code that the compiler runs, and what a process does while it aborts, is not counted as reached.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
. "$root/scripts/common.sh"
cd "$root"
build="$root/build/debug"
out="$build/coverage"

# Per cent: lines and branches of src/ with the records it shares, of plain/kernel, of plain/archive, of
# plain/siblings, and of plain/tarnmail with plain/console.
readonly FLOORS=(99.7 96.6 94.5 90.7 95 85 95 85 95 85)

case "${1:-}" in
  --of-last-run) ;;
  "")
    install_packages "${TARN_PACKAGES[@]}" "${TARN_MORE_PACKAGES[@]}"
    use_fast_temp_directory
    build_preset debug
    rm -rf "$build/profiles"
    ctest --preset debug -j "$(nproc)" >&2
    ;;
  *) say "usage: scripts/coverage.sh [--of-last-run]"; exit 2 ;;
esac

shopt -s nullglob
# A helper that is killed while it writes its own leaves one that cannot be read.
profiles=("$build/profiles/"*.profraw)
[ ${#profiles[@]} -gt 0 ] || { say "no test of the debug build has run"; exit 1; }
rm -rf "$out"
mkdir -p "$out"
llvm-profdata merge -failure-mode=all -o "$out/all.profdata" "${profiles[@]}"
objects=()
for file in "$build"/tests/*Tests "$build"/tests/siblings/client/programs/* "$build/libTarnbase.so" \
  "$build"/tarnmail{,-archive,-search,-pages,-office}; do
  objects+=(-object "$file")
done

# cov COMMAND OPTION...: reads the programs of all tests. Versions of an inline function that one of them
# has and never calls are warned of, and mean nothing: what counts is the version that is called.
cov() {
  local command=$1
  shift
  llvm-cov "$command" "$@" -instr-profile "$out/all.profdata" -compilation-dir="$root" \
    "$build/libTarnPst.so" "${objects[@]}" 2> >(grep -v 'functions have mismatched data' >&2)
}

# What hosts compile, and what only tests are made of, is not the filter's code.
others="$root/(Include/TarnPst.h|Include/Tarnbase/|tests/|fuzz/|build/)|^/usr/"
cov report -ignore-filename-regex="$others" >"$out/report.txt"
cov show -ignore-filename-regex="$others" -format=html -output-dir="$out/html" -show-branches=count

# Each line that is never run, and each condition with an outcome that never comes. Templates have a
# condition once for every type: it counts as reached where it is for any.
cov show -ignore-filename-regex="$others" -show-branches=count -show-instantiations=false |
  awk -v root="$root/" '
    function flush_line(   place, outcomes) {
      outcomes = ""
      for (place in isTrue) {
        if (!isTrue[place] || !isFalse[place]) {
          outcomes = outcomes " never " (!isTrue[place] ? "true" : "") \
            (!isTrue[place] && !isFalse[place] ? "/" : "") (!isFalse[place] ? "false" : "")
        }
      }
      if (never || outcomes != "") {
        printf "%s:%d:%s%s | %s\n", file, number, never ? " never run" : "", outcomes, text
      }
      delete isTrue; delete isFalse
    }
    /^\// && /:$/ { flush_line(); never = 0; file = substr($0, 1, length($0) - 1); sub(root, "", file); next }
    /^ *[0-9]+\|/ {
      flush_line()
      split($0, parts, "|"); number = parts[1] + 0; count = parts[2]; gsub(/ /, "", count)
      never = count == "0"
      text = $0; sub(/^[^|]*\|[^|]*\|/, "", text); sub(/^ +/, "", text)
      next
    }
    /Branch \(/ {
      match($0, /\([0-9]+:[0-9]+\)/); place = substr($0, RSTART, RLENGTH)
      if ($0 !~ /True: 0,/) isTrue[place] = 1; else isTrue[place] += 0
      if ($0 !~ /False: 0\]/) isFalse[place] = 1; else isFalse[place] += 0
    }
    END { flush_line() }' >"$out/left.txt"

# The table, and whether it holds the floors. The columns of a file: regions, functions, lines and
# branches, each as a number, those that are missed, and per cent.
awk -v root="$root/" -v floors="${FLOORS[*]}" '
  function share(missed, all) { return all == 0 ? 100 : 100 * (all - missed) / all }
  function row(name) {
    printf "%-28s %6d lines %7.2f %% %6d branches %7.2f %%\n", name, lines[name], \
      share(lineMisses[name], lines[name]), branches[name], share(branchMisses[name], branches[name])
  }
  function add(name) { lines[name] += $8; lineMisses[name] += $9; branches[name] += $11; branchMisses[name] += $12 }
  function part(path) {
    if (path ~ /^(src|Include)\//) return "the filter"
    if (path ~ /^plain\/kernel\//) return "the plain kernel"
    if (path ~ /^plain\/archive\//) return "the archive library"
    if (path ~ /^plain\/siblings\//) return "the pages"
    if (path ~ /^plain\/(tarnmail|console)\//) return "the command line"
    return "other code"
  }
  function check(name, lineFloor, branchFloor) {
    if (share(lineMisses[name], lines[name]) >= lineFloor &&
        share(branchMisses[name], branches[name]) >= branchFloor) return
    printf "%s is below its floor: %s %% of lines, %s %% of branches\n", name, lineFloor, branchFloor
    bad = 1
  }
  NF == 13 && $1 != "Filename" && $1 != "TOTAL" {
    path = $1; sub(root, "", path)
    folder = path; sub(/\/[^\/]*$/, "", folder); sub(/\/(posix|win32)$/, "", folder)
    if (!(folder in lines)) order[++folders] = folder
    add(folder)
    add(part(path))
  }
  END {
    for (i = 1; i <= folders; ++i) row(order[i])
    row("the filter")
    row("the plain kernel")
    row("the archive library")
    row("the pages")
    row("the command line")
    split(floors, floor, " ")
    check("the filter", floor[1], floor[2])
    check("the plain kernel", floor[3], floor[4])
    check("the archive library", floor[5], floor[6])
    check("the pages", floor[7], floor[8])
    check("the command line", floor[9], floor[10])
    exit bad
  }' "$out/report.txt"
