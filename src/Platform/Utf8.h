// Utf8.h - the first character of a UTF-8 or UTF-16 text, and a character in either form: what
// everything that converts or shows text is built on.
//
// What is malformed reads as U+FFFD. In UTF-8 that is a truncated sequence as far as it could still
// have become a character (Unicode's maximal subpart), or any other byte alone; overlong forms,
// surrogates and what lies above U+10FFFF are no sequences. In UTF-16 it is half of a pair.
#ifndef TARN_PLATFORM_UTF8_H
#define TARN_PLATFORM_UTF8_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace tarn::platform {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

struct Character {
  char32_t codePoint = kReplacementCharacter;
  size_t size = 1;  // units of the text
  bool isWellFormed = false;
};

// The character that a text begins with. The text is not empty.
constexpr Character FirstCharacter(std::string_view text) {
  const auto first = static_cast<uint8_t>(text[0]);
  if (first < 0x80) return {first, 1, true};
  if (first < 0xC2 || first > 0xF4) return {};
  Character character{first, 1, false};
  // The bounds of a first follower keep out overlong forms, surrogates and the numbers too large.
  const auto takeFollower = [&](uint8_t low = 0x80, uint8_t high = 0xBF) {
    const auto byte = static_cast<uint8_t>(character.size < text.size() ? text[character.size] : 0);
    if (byte < low || byte > high) return false;
    character.codePoint = (character.codePoint << 6) | (byte & 0x3F);
    ++character.size;
    return true;
  };
  if (first < 0xE0) {
    character.codePoint &= 0x1F;
    character.isWellFormed = takeFollower();
  } else if (first < 0xF0) {
    character.codePoint &= 0x0F;
    character.isWellFormed =
        takeFollower(first == 0xE0 ? 0xA0 : 0x80, first == 0xED ? 0x9F : 0xBF) && takeFollower();
  } else {
    character.codePoint &= 0x07;
    character.isWellFormed =
        takeFollower(first == 0xF0 ? 0x90 : 0x80, first == 0xF4 ? 0x8F : 0xBF) && takeFollower() &&
        takeFollower();
  }
  if (!character.isWellFormed) character.codePoint = kReplacementCharacter;
  return character;
}

constexpr Character FirstCharacter(std::u16string_view text) {
  const char16_t first = text[0];
  if ((first & 0xF800) != 0xD800) return {first, 1, true};
  const bool isPair = first < 0xDC00 && text.size() > 1 && (text[1] & 0xFC00) == 0xDC00;
  if (!isPair) return {};
  return {0x10000 + ((first & 0x3FFu) << 10) + (text[1] & 0x3FFu), 2, true};
}

// Whether every surrogate has its other half.
constexpr bool IsWellFormed(std::u16string_view text) {
  while (!text.empty()) {
    const Character character = FirstCharacter(text);
    if (!character.isWellFormed) return false;
    text.remove_prefix(character.size);
  }
  return true;
}

// Writes a code point, which is no surrogate and at most U+10FFFF. The units written; 0 when the
// destination has no room for them.
constexpr size_t WriteCharacter(char32_t codePoint, std::span<char> destination) {
  const size_t size = codePoint < 0x80 ? 1 : codePoint < 0x800 ? 2 : codePoint < 0x10000 ? 3 : 4;
  if (size > destination.size()) return 0;
  const auto put = [&](size_t at, char32_t byte) { destination[at] = static_cast<char>(byte); };
  const auto bits = [&](uint32_t shift) { return 0x80 | ((codePoint >> shift) & 0x3F); };
  switch (size) {
    case 1:
      put(0, codePoint);
      break;
    case 2:
      put(0, 0xC0 | (codePoint >> 6));
      put(1, bits(0));
      break;
    case 3:
      put(0, 0xE0 | (codePoint >> 12));
      put(1, bits(6));
      put(2, bits(0));
      break;
    default:
      put(0, 0xF0 | (codePoint >> 18));
      put(1, bits(12));
      put(2, bits(6));
      put(3, bits(0));
  }
  return size;
}

constexpr size_t WriteCharacter(char32_t codePoint, std::span<char16_t> destination) {
  const size_t size = codePoint < 0x10000 ? 1 : 2;
  if (size > destination.size()) return 0;
  if (size == 2) destination[0] = static_cast<char16_t>(0xD7C0 + (codePoint >> 10));
  destination[size - 1] =
      static_cast<char16_t>(size == 1 ? codePoint : 0xDC00 | (codePoint & 0x3FF));
  return size;
}

}  // namespace tarn::platform

#endif  // TARN_PLATFORM_UTF8_H
