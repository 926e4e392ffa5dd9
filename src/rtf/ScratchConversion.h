// ScratchConversion.h - the conversions of Platform/CodePages.h into a block that the caller has.
//
// Both give the part of the block that was written; an empty one is failure. A block beyond
// INT32_MAX counts as one of INT32_MAX.
#ifndef TARN_RTF_SCRATCHCONVERSION_H
#define TARN_RTF_SCRATCHCONVERSION_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "Platform/CodePages.h"

namespace tarn {

inline int32_t ConversionCapacity(size_t size) {
  return static_cast<int32_t>(std::min<size_t>(size, INT32_MAX));
}

inline std::string_view ToCodePage(uint32_t codePage, std::u16string_view text,
                                   std::span<char> scratch, bool* usedDefault = nullptr) {
  const int32_t size = platform::Utf16ToBytes(codePage, text, scratch.data(),
                                              ConversionCapacity(scratch.size()), usedDefault);
  return {scratch.data(), static_cast<size_t>(std::max(size, 0))};
}

inline std::u16string_view FromCodePage(uint32_t codePage, std::string_view bytes,
                                        std::span<char16_t> scratch) {
  const int32_t size =
      platform::BytesToUtf16(codePage, bytes, scratch.data(), ConversionCapacity(scratch.size()));
  return {scratch.data(), static_cast<size_t>(std::max(size, 0))};
}

}  // namespace tarn

#endif
