// FileTime.h - FILETIME values: 100 ns since 1601, signed as stores and messages are read.
#ifndef TARN_COMMON_FILETIME_H
#define TARN_COMMON_FILETIME_H

#include <cstdint>

namespace tarn {

// Seconds since 1970, rounded toward zero. Times near the ends of the signed range wrap around;
// they name no real moment anyway.
constexpr int64_t SecondsSince1970(int64_t fileTime) {
  constexpr uint64_t kFileTimeOf1970 = 116444736000000000;
  constexpr int64_t kFileTimeUnitsPerSecond = 10000000;
  return static_cast<int64_t>(static_cast<uint64_t>(fileTime) - kFileTimeOf1970) /
         kFileTimeUnitsPerSecond;
}

}  // namespace tarn

#endif
