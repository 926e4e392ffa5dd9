// SiblingCall.h - what fltInfo and fltLoad share on the way to a sibling.
#ifndef TARN_FILEFORMATS_PST_SIBLINGCALL_H
#define TARN_FILEFORMATS_PST_SIBLINGCALL_H

#include "Internal/PstFilterData.h"

namespace tarn {

// The sibling for a kind of document; the text sibling in any case when text is asked for.
TarnSibling SiblingForKind(TarnDocumentKind kind, bool textOnly);

// Does the document go to the sibling as a file?
inline bool GoesByTempFile(const PstFilterData& record, int32_t sibling) {
  return sibling == SiblingHtml && record.useTempFile;
}

// The filter's copy of the host's options (null counts as zeros), with its own size.
HostLoadOptions CopyOptions(const HostLoadOptions* options);

// Passes on what the sibling had kept for a message: entry `position` of the slot's list, or the
// slot's single item for a position below 1. A list too short, and a malformed one, give nothing.
void PassSiblingData(const FilterDataSlot* slot, int32_t position, HostLoadOptions& options);

// A message's index for its number, which counts from 1, and its place in a slot's list, where the
// first entry is the record's: in the host's 32-bit arithmetic, which wraps.
inline int32_t MessageIndex(int32_t number) {
  return static_cast<int32_t>(static_cast<uint32_t>(number) - 1);
}
inline int32_t SiblingPosition(int32_t index) {
  return static_cast<int32_t>(static_cast<uint32_t>(index) + 1);
}

}  // namespace tarn

#endif
