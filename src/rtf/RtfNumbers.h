// RtfNumbers.h - the small steps after a control word: a number, the one blank that ends the word.
// Each takes what it reads off the front of the text.
#ifndef TARN_RTF_RTFNUMBERS_H
#define TARN_RTF_RTFNUMBERS_H

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tarn {

constexpr bool IsRtfDigit(char byte) { return byte >= '0' && byte <= '9'; }

inline void EatRtfSpace(std::string_view& text) {
  if (text.starts_with(' ')) text.remove_prefix(1);
}

// The decimal number at the front, which wraps at 32 bits; 0 without a digit. There are no signs.
// The blank after it goes with it.
inline uint32_t TakeRtfNumber(std::string_view& text) {
  uint32_t number = 0;
  size_t digits = 0;
  for (; digits < text.size() && IsRtfDigit(text[digits]); ++digits) {
    number = number * 10 + static_cast<uint32_t>(text[digits] - '0');
  }
  text.remove_prefix(digits);
  EatRtfSpace(text);
  return number;
}

}  // namespace tarn

#endif
