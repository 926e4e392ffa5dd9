#!/usr/bin/env bash
# scripts/dump-inputs.sh FOLDER [PRESET]: writes a folder for scripts/dump.sh: the files that tests
# of whole roads make for themselves, the examples, and the seeds of fuzzing, written and kept. The same
# files each time.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
. "$root/scripts/common.sh"
[ $# -ge 1 ] || { say "usage: scripts/dump-inputs.sh FOLDER [PRESET]"; exit 2; }
folder=$1
preset=${2:-release}

install_packages "${TARN_PACKAGES[@]}"
build_preset "$preset" WriteInputs WriteSeeds
mkdir -p "$folder/examples"
"$root/build/$preset/tests/WriteInputs" "$folder"
"$root/build/$preset/tests/WriteSeeds" "$folder/written-seeds"
mkdir -p "$folder/seeds"
cp -r "$root"/fuzz/seeds/Fuzz{CompoundFile,EmbeddedExport,EmlRoad,MsgRoad,PstRoad,PstStore} "$folder/seeds"
# What is no mail file is taken as a mail, and as such belongs here too; but not the sources.
cp -r "$root"/examples/{*.eml,*.pst,body-images,compound,compressed-rtf,html-scrub,msg,rtf,rtf-html} \
  "$folder/examples"
say "$(find "$folder" -type f | wc -l) files in $folder"
