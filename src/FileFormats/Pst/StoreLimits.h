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

// Messages that the folders may claim together.
constexpr uint64_t ClaimLimit(uint64_t fileSize) { return 1000000 + fileSize / kSmallestNodeEntry; }

// Rows of all contents tables together.
constexpr uint64_t RowLimit(uint64_t fileSize) { return 65536 + fileSize / kSmallestNodeEntry; }

// Bytes of the names of all folders together.
constexpr uint64_t FolderTextLimit(uint64_t fileSize) {
  return (uint64_t{64} << 20) + 4 * fileSize;
}

// Bytes of the subjects, header strings and bodies of all messages together, packed RTF before and
// after it is unpacked. It grows to 8 times its size at most: 17 bytes hold 136.
constexpr uint64_t TextLimit(uint64_t fileSize) { return (uint64_t{64} << 20) + 16 * fileSize; }

// Attachments of a message, whether they are listed or looked at for images, and the bytes of the
// names and properties of the listed ones together.
constexpr uint64_t AttachmentLimit(uint64_t fileSize) {
  return 16384 + fileSize / kSmallestSubnodeEntry;
}
constexpr uint64_t AttachmentTextLimit(uint64_t fileSize) {
  return (uint64_t{64} << 20) + 4 * fileSize;
}

// Bytes of the images that go into a body, twice for those that are written to files.
constexpr uint64_t ImageLimit(uint64_t fileSize) { return (uint64_t{64} << 20) + 4 * fileSize; }

// Takes `bytes` from what is left of a limit; false, and nothing left, when there is less.
constexpr bool TakeFrom(uint64_t& left, uint64_t bytes) {
  const bool fits = bytes <= left;
  left = fits ? left - bytes : 0;
  return fits;
}

}  // namespace tarn

#endif
