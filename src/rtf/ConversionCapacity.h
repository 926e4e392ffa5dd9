// ConversionCapacity.h - the size of a scratch block, as the conversions of Platform/CodePages.h
// take it: a block beyond INT32_MAX counts as one of INT32_MAX.
#ifndef TARN_RTF_CONVERSIONCAPACITY_H
#define TARN_RTF_CONVERSIONCAPACITY_H

#include <algorithm>
#include <cstdint>

namespace tarn {

inline int32_t ConversionCapacity(uint64_t size) {
  return static_cast<int32_t>(std::min<uint64_t>(size, INT32_MAX));
}

}  // namespace tarn

#endif
