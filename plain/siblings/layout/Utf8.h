// Utf8.h - what is done with UTF-8 here.
#ifndef TARN_SIBLINGS_LAYOUT_UTF8_H
#define TARN_SIBLINGS_LAYOUT_UTF8_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tarn::pages {

// No overlong forms, no surrogates, nothing beyond U+10FFFF. NULs are characters as others.
bool IsUtf8(std::string_view text);

bool IsAscii(std::string_view text);

// The text is valid, and the position a character's: the character, and the position goes on.
char32_t NextCharacter(std::string_view text, size_t& position);

// What is no character becomes U+FFFD.
void AppendUtf8(std::string& text, char32_t character);

// The text without a character that its end cuts.
std::string_view WithoutCutCharacter(std::string_view text);

// As browsers read Windows-1252: the five bytes without a character are control characters.
void AppendWindows1252(std::string& text, std::string_view bytes);

// Each line by itself: UTF-8 where it is that, else Windows-1252.
void AppendLines(std::string& text, std::string_view bytes);

// A lone surrogate becomes U+FFFD; an odd byte at the end is dropped.
enum class ByteOrder : uint8_t { Little, Big };
void AppendUtf16(std::string& text, std::string_view bytes, ByteOrder order);

}  // namespace tarn::pages

#endif
