// AttachmentCommon.h - the common start of the two attachment calls.
#ifndef TARN_FILEFORMATS_PST_ATTACHMENTCOMMON_H
#define TARN_FILEFORMATS_PST_ATTACHMENTCOMMON_H

#include "Internal/AttachmentRequest.h"

namespace tarn {

// Opens the file, sniffs it and lets its reader walk the attachments. 1 with the TarnFormat of the
// reader that ran; -10, -7, or what the reader and the callback gave.
int32_t WalkAttachments(const char16_t* path, const AttachmentOptions* options,
                        const AttachmentRequest& request, int32_t& readerFormat);

// Gives back what a block holds beyond `used` elements when that is more than 32 bytes; the block
// stays as it is when it cannot be resized.
template <typename T>
T* ShrinkToFit(T* block, uint64_t used, uint64_t capacity) {
  if ((capacity - used) * sizeof(T) <= 32) return block;
  auto* const smaller = static_cast<T*>(KernelRealloc(block, used * sizeof(T), TARN_HERE));
  return smaller != nullptr ? smaller : block;
}

}  // namespace tarn

#endif
