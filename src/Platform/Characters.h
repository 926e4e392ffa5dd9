// Characters.h - what a program that cuts or aligns text must know of a character.
#ifndef TARN_PLATFORM_CHARACTERS_H
#define TARN_PLATFORM_CHARACTERS_H

#include <algorithm>
#include <cstddef>
#include <span>

#include "Platform/CharacterRanges.h"

namespace tarn::platform {

constexpr bool IsIn(std::span<const CodePointRange> ranges, char32_t codePoint) {
  if (codePoint < ranges.front().first) return false;  // most of what mail holds
  const auto after = std::upper_bound(
      ranges.begin(), ranges.end(), codePoint,
      [](char32_t value, const CodePointRange& range) { return value < range.first; });
  return codePoint <= (after - 1)->last;
}

// Whether it belongs to the character before it: general category Mn, Mc or Me.
constexpr bool IsCombiningMark(char32_t codePoint) { return IsIn(kCombiningMarks, codePoint); }

// The columns that a terminal takes: 2 for East Asian wide characters, 0 for marks that take no
// room of their own and for the zero width space and joiners, 1 for all others.
constexpr size_t TerminalColumns(char32_t codePoint) {
  if (IsIn(kZeroWidth, codePoint)) return 0;
  return IsIn(kDoubleWidth, codePoint) ? 2 : 1;
}

// Whether a terminal that gets it as it is shows something else than text: controls (C0, DEL, C1),
// separators that break a line, marks that change the direction of writing, and byte order marks.
constexpr bool MisleadsTerminals(char32_t codePoint) {
  if (codePoint >= ' ' && codePoint < 0x7F) return false;  // most of what mail holds
  constexpr CodePointRange kMisleading[] = {
      {0x0000, 0x001F}, {0x007F, 0x009F}, {0x061C, 0x061C}, {0x200E, 0x200F},
      {0x2028, 0x202E}, {0x2066, 0x2069}, {0xFEFF, 0xFEFF},
  };
  return IsIn(kMisleading, codePoint);
}

}  // namespace tarn::platform

#endif  // TARN_PLATFORM_CHARACTERS_H
