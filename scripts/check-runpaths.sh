#!/usr/bin/env bash
# scripts/check-runpaths.sh FILE...: where do programs and libraries look for libraries?
#
# A folder of theirs (RUNPATH, RPATH) is told by its full path or from where the file is ($ORIGIN);
# an empty one would be the folder that the program happens to be started in. Names each file that
# has another, one a line; exit status 0 when there is none.
set -euo pipefail

# The folders of a file, one a line, each followed by a dot.
folders() {
  readelf --wide --dynamic "$1" |
    sed -nE 's/.*\((RUNPATH|RPATH)\).*\[(.*)\]$/\2/p' | sed 's/:/.\n/g; s/$/./'
}

status=0
for file in "$@"; do
  found=$(folders "$file")
  while read -r folder; do
    case $folder in
      "" | /* | "\$ORIGIN". | "\$ORIGIN"/*) ;;
      *) echo "$(basename "$file"): '${folder%.}'" && status=1 ;;
    esac
  done <<<"$found"
done
exit "$status"
