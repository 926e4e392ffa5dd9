# shellcheck shell=bash disable=SC2034,SC2154
# The fuzz targets, their dictionaries and where their inputs come from. Sourced, never run; `root` is
# the repository.

work="$root/build/debug/fuzz"

# The targets of whole calls come first: they are the slowest, and reach most.
FUZZ_TARGETS=(
  FuzzEmlRoad FuzzMsgRoad FuzzPstRoad FuzzPstStore FuzzEmbeddedExport FuzzCompoundFile FuzzRtfDocument
  FuzzRtfToHtml FuzzCompressedRtf FuzzRtfFontTable FuzzImagePass FuzzByteSearch FuzzScrubHtmlBody
)
# Those of the pages, where the helpers are built.
if [ -x "$root/build/debug/tests/FuzzHtmlPages" ]; then
  FUZZ_TARGETS+=(FuzzHtmlPages FuzzTextPages FuzzPicture FuzzHarmlessRtf)
fi
# Those of the archive, where it is built.
if [ -x "$root/build/debug/tests/FuzzArchiveMail" ]; then
  FUZZ_TARGETS+=(
    FuzzArchiveForms FuzzArchiveStore FuzzArchiveEml FuzzArchiveHtml FuzzArchiveMail FuzzArchiveMsg FuzzTnef
    FuzzUnwrapRtf FuzzHtmlText FuzzCatalogue
  )
fi

declare -A FUZZ_DICTIONARY=(
  [FuzzArchiveEml]=mail.dict [FuzzArchiveForms]=mail.dict [FuzzCatalogue]=mail.dict [FuzzArchiveHtml]=html.dict
  [FuzzByteSearch]=mail.dict [FuzzCompoundFile]=compound.dict [FuzzCompressedRtf]=rtf.dict
  [FuzzEmbeddedExport]=msg.dict [FuzzEmlRoad]=mail.dict [FuzzImagePass]=images.dict
  [FuzzMsgRoad]=msg.dict [FuzzPstRoad]=pst.dict [FuzzPstStore]=pst.dict [FuzzRtfDocument]=rtf.dict
  [FuzzRtfFontTable]=rtf.dict [FuzzRtfToHtml]=rtf.dict [FuzzScrubHtmlBody]=rtf.dict
  [FuzzHarmlessRtf]=fields.dict [FuzzHtmlPages]=html.dict [FuzzPicture]=pictures.dict
  [FuzzTextPages]=mail.dict [FuzzArchiveMail]=mail.dict [FuzzArchiveMsg]=msg.dict
  [FuzzArchiveStore]=pst.dict [FuzzHtmlText]=html.dict [FuzzTnef]=msg.dict [FuzzUnwrapRtf]=rtf.dict
)

# The largest input in bytes, where it is not the megabyte that the others get: so that no run takes
# seconds, sanitizers included.
declare -A FUZZ_LARGEST=([FuzzByteSearch]=65536 [FuzzRtfDocument]=131072 [FuzzRtfFontTable]=131072
  [FuzzHtmlPages]=16384 [FuzzPicture]=16384 [FuzzTextPages]=65536 [FuzzArchiveMail]=32768
  [FuzzArchiveEml]=65536 [FuzzArchiveForms]=131072 [FuzzArchiveHtml]=65536 [FuzzArchiveMsg]=131072
  [FuzzHtmlText]=65536 [FuzzTnef]=131072 [FuzzUnwrapRtf]=131072
  [FuzzCatalogue]=8192)

# Writes what is made for fuzzing alone: stores and MSG files of the builders, and a folder of mails.
write_seeds() {
  "$root/build/debug/tests/WriteSeeds" "$work/written-seeds"
  mkdir -p "$work/written-seeds/eml"
  cp "$root"/examples/*.eml "$work/written-seeds/eml/"
}

# fuzz_sources TARGET: sets `sources` to the folders that its inputs come from, besides its corpus: its
# own seeds first, then those that are there for others too.
fuzz_sources() {
  sources=("$root/fuzz/seeds/$1")
  case "$1" in
    FuzzArchiveMsg)
      sources+=("$root/examples/msg" "$work/written-seeds/msg" "$root/fuzz/seeds/FuzzMsgRoad") ;;
    FuzzHtmlText)
      sources+=("$root/examples/html-scrub" "$root/fuzz/seeds/FuzzHtmlPages") ;;
    FuzzTnef) sources+=("$work/written-seeds/tnef") ;;
    FuzzUnwrapRtf) sources+=("$root/examples/rtf-html" "$root/examples/rtf" "$root/fuzz/seeds/FuzzRtfToHtml") ;;
    FuzzCompoundFile)
      sources+=("$root/examples/compound" "$work/written-seeds/msg" "$root/fuzz/seeds/FuzzMsgRoad") ;;
    FuzzCompressedRtf) sources+=("$root/examples/compressed-rtf") ;;
    FuzzEmbeddedExport)
      sources+=("$root/examples/msg" "$work/written-seeds/msg" "$root/fuzz/seeds/FuzzMsgRoad") ;;
    FuzzArchiveForms)
      sources+=("$work/written-seeds/pst" "$work/written-seeds/msg" "$work/written-seeds/tnef"
        "$work/written-seeds/eml" "$root/examples/msg" "$root/fuzz/seeds/FuzzArchiveEml") ;;
    FuzzArchiveEml | FuzzArchiveHtml)
      sources+=("$work/written-seeds/eml" "$root/fuzz/seeds/FuzzArchiveHtml") ;;
    FuzzArchiveMail | FuzzEmlRoad) sources+=("$work/written-seeds/eml") ;;
    FuzzHarmlessRtf)
      sources+=("$root/examples/rtf" "$root/examples/rtf-html" "$root/tests/siblings/pages/reference") ;;
    FuzzHtmlPages)
      sources+=("$root/examples/html-scrub" "$root/examples/body-images" "$root/tests/siblings/pages/reference") ;;
    FuzzTextPages) sources+=("$root/examples" "$root/tests/siblings/pages/reference") ;;
    FuzzImagePass) sources+=("$root/examples/body-images") ;;
    FuzzMsgRoad) sources+=("$root/examples/msg" "$work/written-seeds/msg") ;;
    FuzzArchiveStore)
      sources+=("$work/written-seeds/pst" "$root/fuzz/seeds/FuzzPstStore" "$root/fuzz/seeds/FuzzPstRoad") ;;
    FuzzPstRoad) sources+=("$work/written-seeds/pst") ;;
    FuzzPstStore) sources+=("$work/written-seeds/pst" "$root/fuzz/seeds/FuzzPstRoad") ;;
    FuzzRtfDocument | FuzzRtfFontTable) sources+=("$root/examples/rtf") ;;
    FuzzRtfToHtml) sources+=("$root/examples/rtf-html") ;;
    FuzzScrubHtmlBody) sources+=("$root/examples/html-scrub") ;;
  esac
  local folder existing=()
  for folder in "${sources[@]}"; do
    if [ -d "$folder" ]; then existing+=("$folder"); fi
  done
  sources=("${existing[@]}")
}
