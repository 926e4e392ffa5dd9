// Utf8Text.h - whole texts between UTF-8 and UTF-16. What is malformed becomes U+FFFD.
#ifndef TARN_PLATFORM_UTF8_TEXT_H
#define TARN_PLATFORM_UTF8_TEXT_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>
#include <type_traits>

#include "Platform/Utf8.h"

namespace tarn::platform {

struct Conversion {
  size_t size = 0;  // units of the other form; those written, when not all fit
  bool fits = true;
  bool isWellFormed = true;
};

template <typename Unit>
constexpr bool IsAscii(Unit unit) {
  return static_cast<std::make_unsigned_t<Unit>>(unit) < 0x80;
}

// Copies the ASCII run at the front, as far as both sides reach. The units copied. A run that is
// longer than most words goes over in strides, which compilers vectorise.
template <typename From, typename To>
size_t CopyAsciiRun(std::basic_string_view<From> source, std::span<To> destination) {
  constexpr size_t kStride = 16;
  const size_t most = std::min(source.size(), destination.size());
  size_t done = 0;
  const auto copyUpTo = [&](size_t end) {
    for (; done < end && IsAscii(source[done]); ++done) {
      destination[done] = static_cast<To>(source[done]);
    }
    return done == end;
  };
  if (!copyUpTo(std::min(most, kStride))) return done;
  for (; most - done >= kStride; done += kStride) {
    std::array<From, kStride> units;
    std::copy_n(source.data() + done, kStride, units.data());
    unsigned seen = 0;
    for (const From unit : units) seen |= static_cast<std::make_unsigned_t<From>>(unit);
    if (seen >= 0x80) break;
    for (size_t i = 0; i < kStride; ++i) destination[done + i] = static_cast<To>(units[i]);
  }
  copyUpTo(most);
  return done;
}

// From char to char16_t, or the other way.
template <typename From, typename To>
Conversion ConvertText(std::basic_string_view<From> source, std::span<To> destination) {
  Conversion result;
  while (!source.empty()) {
    const size_t ascii = CopyAsciiRun(source, destination.subspan(result.size));
    source.remove_prefix(ascii);
    result.size += ascii;
    result.fits = source.empty() || result.size < destination.size();
    if (!result.fits) return result;
    while (!source.empty() && !IsAscii(source.front())) {
      const Character character = FirstCharacter(source);
      const size_t written = WriteCharacter(character.codePoint, destination.subspan(result.size));
      result.isWellFormed = result.isWellFormed && character.isWellFormed;
      result.fits = written != 0;
      if (!result.fits) return result;
      source.remove_prefix(character.size);
      result.size += written;
    }
  }
  return result;
}

// What ConvertText would write with room for all of it.
template <typename To, typename From>
Conversion MeasureText(std::basic_string_view<From> source) {
  Conversion result;
  std::array<To, 4> units;
  while (!source.empty()) {
    const Character character = FirstCharacter(source);
    result.isWellFormed = result.isWellFormed && character.isWellFormed;
    result.size += WriteCharacter(character.codePoint, std::span<To>(units));
    source.remove_prefix(character.size);
  }
  return result;
}

}  // namespace tarn::platform

#endif  // TARN_PLATFORM_UTF8_TEXT_H
