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

}  // namespace tarn::platform

#endif  // TARN_PLATFORM_CHARACTERS_H
