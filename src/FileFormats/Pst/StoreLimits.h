// StoreLimits.h - what reading one message of a store may cost, by the size of the store's file.
//
// A damaged store can say much in few bytes: rows of many tables can name one message, a body can
// be made of one block again and again. Each bound is a fixed part for what small stores get wrong
// without harm and a part that whole stores of that size cannot exceed.
#ifndef TARN_FILEFORMATS_PST_STORELIMITS_H
#define TARN_FILEFORMATS_PST_STORELIMITS_H

#include <cstdint>

namespace tarn {

// Every node takes 16 bytes of the node tree at least, every subnode 12 of its own.
inline constexpr uint64_t kSmallestNodeEntry = 16;
inline constexpr uint64_t kSmallestSubnodeEntry = 12;

// Messages that the folders may claim together: a record is made for each.
constexpr uint64_t ClaimLimit(uint64_t fileSize) { return 1000000 + fileSize / kSmallestNodeEntry; }

// Rows of all contents tables together.
constexpr uint64_t RowLimit(uint64_t fileSize) { return 65536 + fileSize / kSmallestNodeEntry; }

// Bytes of the subjects and bodies of all messages together. Packed RTF grows by 8.5 at most.
constexpr uint64_t TextLimit(uint64_t fileSize) { return (uint64_t{64} << 20) + 16 * fileSize; }

// Attachments of a message, and the bytes of their names and properties together.
constexpr uint64_t AttachmentLimit(uint64_t fileSize) {
  return 16384 + fileSize / kSmallestSubnodeEntry;
}
constexpr uint64_t AttachmentTextLimit(uint64_t fileSize) {
  return (uint64_t{64} << 20) + 4 * fileSize;
}

// Takes `bytes` from what is left of a limit; false, and nothing left, when there is less.
constexpr bool TakeFrom(uint64_t& left, uint64_t bytes) {
  const bool fits = bytes <= left;
  left = fits ? left - bytes : 0;
  return fits;
}

}  // namespace tarn

#endif
