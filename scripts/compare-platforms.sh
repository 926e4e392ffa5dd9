#!/usr/bin/env bash
# scripts/compare-platforms.sh [POSIX_BUILD [WINDOWS_BUILD]]: compares what the two builds make of
# every byte, pair and unit of every code page, and of the units of fonts, with the differences that
# tests/Platform/PlatformDifferences.txt accepts. The builds are folders with PlatformDump built;
# by default those of the presets "release" and "windows". The comparison takes 60 MB of the Windows
# build's folder until it ends.
#
# Differences that are not accepted, and accepted ones that are none, are listed. The last line says
# whether the platforms agree, and so does the exit code.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
posix=$(realpath "${1:-$root/build/release}")
windows=$(realpath "${2:-$root/build/windows}")

# The libraries of this build, whichever build the caller has in mind for other programs.
export WINEPREFIX=${WINEPREFIX:-$windows/wine-prefix}
wine_path=Z:$windows
export WINEPATH=${wine_path//\//\\}

folder=$(mktemp -d "$windows/comparison.XXXXXX")
trap 'rm -rf "$folder"' EXIT
cd "$folder"

# dump PROGRAM...: what it says is shown only when it fails. Its output is a file, which services of
# Wine that it starts may hold open.
dump() {
  timeout 60 "$@" </dev/null >log 2>&1 && return
  cat log
  echo "platforms do not agree: $* failed"
  exit 1
}

dump "$posix/tests/PlatformDump" posix.dump
dump "$root/scripts/wine-run" "$windows/tests/PlatformDump.exe" windows.dump
"$posix/tests/ComparePlatforms" posix.dump windows.dump \
  "$root/tests/Platform/PlatformDifferences.txt" >report || { head -n 40 report; tail -n 1 report; exit 1; }
cat report
