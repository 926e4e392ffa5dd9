#include <cstring>

#include "Common/InlineImages.h"

namespace tarn {

int32_t SpliceBytes(SizedBytes& text, uint64_t offset, uint64_t removed, const char* bytes,
                    uint64_t count) {
  const uint64_t oldLength = text.length;
  if (offset > oldLength || removed > oldLength - offset) return StatusFailed;
  const uint64_t kept = oldLength - removed;
  if (count > UINT64_MAX - kept) return StatusFailed;

  const uint64_t newLength = kept + count;
  if (newLength > oldLength) {
    auto* const block = static_cast<char*>(KernelRealloc(text.data, newLength, TARN_HERE));
    if (block == nullptr) return StatusFailed;
    text.data = block;
  }
  text.length = newLength;

  char* const place = text.data + offset;
  const uint64_t tail = kept - offset;
  if (tail != 0 && count != removed) std::memmove(place + count, place + removed, tail);
  if (count != 0) std::memcpy(place, bytes, count);
  return StatusOk;
}

}  // namespace tarn
