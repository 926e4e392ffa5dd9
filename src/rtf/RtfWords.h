// RtfWords.h - the control words that written text is made of, appended to an output.
//
// All give 1, or the output's last error; then nothing of the word was written.
#ifndef TARN_RTF_RTFWORDS_H
#define TARN_RTF_RTFWORDS_H

#include <cstdint>

#include "Internal/Tarnclasses_.h"

namespace tarn {

// Bytes that RTF does not take as themselves: controls and its own signs.
constexpr bool IsRtfSpecial(uint32_t unit) {
  return unit < 32 || unit == '\\' || unit == '{' || unit == '}';
}

// "\fN ", N being a signed number.
int32_t AppendRtfFont(TrackedBuffer<char>& output, uint32_t number);

// "\'hh" with lower-case digits.
int32_t AppendRtfByte(TrackedBuffer<char>& output, uint8_t byte);

// "\uN ?", N being a signed 16-bit number: the question mark is for readers without Unicode.
int32_t AppendRtfUnit(TrackedBuffer<char>& output, char16_t unit);

}  // namespace tarn

#endif
