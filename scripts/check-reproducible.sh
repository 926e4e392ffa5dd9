#!/usr/bin/env bash
# scripts/check-reproducible.sh [PRESET...]: does the same commit give the same package, byte for byte?
#
# Builds and packs the last commit twice, from two clones in folders with names of different length,
# for each preset (by default "release" and "windows"), and compares the packages. Takes about five
# minutes a preset on two cores; to be run before a release.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
[ $# -gt 0 ] || set -- release windows
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# package_of PRESET FOLDER: packs a new clone in the folder and prints the package's path.
package_of() {
  local preset=$1 folder=$2
  git clone --quiet "$root" "$folder"
  (cd "$folder" &&
    cmake --preset "$preset" &&
    cmake --build --preset "$preset" --target shipped &&
    cpack --config "build/$preset/CPackConfig.cmake" -B "$folder/packed") >"$folder.log" 2>&1 ||
    { cat "$folder.log" >&2; return 1; }
  find "$folder/packed" -maxdepth 1 \( -name '*.deb' -o -name '*.zip' \)
}

for preset in "$@"; do
  first=$(package_of "$preset" "$work/a-$preset")
  # Another name, another day.
  second=$(package_of "$preset" "$work/another folder $preset")
  cmp "$first" "$second" || { echo "$(basename "$first") differs from build to build"; exit 1; }
  echo "$(basename "$first"): $(sha256sum <"$first" | cut -d' ' -f1)"
done
