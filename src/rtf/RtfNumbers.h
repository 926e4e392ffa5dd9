// RtfNumbers.h - the small steps behind a control word: a number, the one blank that ends the word.
// No step goes beyond `end`.
#ifndef TARN_RTF_RTFNUMBERS_H
#define TARN_RTF_RTFNUMBERS_H

#include <cstdint>

namespace tarn {

constexpr bool IsRtfDigit(char byte) { return byte >= '0' && byte <= '9'; }

inline void EatRtfSpace(const char*& cursor, const char* end) {
  if (cursor < end && *cursor == ' ') ++cursor;
}

// The decimal number at the cursor, which wraps at 32 bits; 0 without a digit. There are no signs.
// The blank behind it is stepped over.
inline uint32_t TakeRtfNumber(const char*& cursor, const char* end) {
  uint32_t number = 0;
  for (; cursor < end && IsRtfDigit(*cursor); ++cursor) {
    number = number * 10 + static_cast<uint32_t>(*cursor - '0');
  }
  EatRtfSpace(cursor, end);
  return number;
}

}  // namespace tarn

#endif
