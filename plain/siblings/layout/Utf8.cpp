#include "siblings/layout/Utf8.h"

#include <glib.h>

#include <algorithm>
#include <array>

namespace tarn::pages {

namespace {

uint8_t ByteAt(std::string_view text, size_t position) {
  return static_cast<uint8_t>(text[position]);
}

bool IsContinuation(uint8_t byte) { return (byte & 0xC0) == 0x80; }

// How long a character is by its first byte.
size_t LengthOf(uint8_t lead) {
  if (lead < 0x80) return 1;
  if (lead < 0xE0) return 2;
  return lead < 0xF0 ? 3 : 4;
}

// Windows-1252 from 0x80 to 0x9F.
constexpr std::array<char16_t, 32> kWindows1252 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

}  // namespace

bool IsUtf8(std::string_view text) {
  // GLib's own function for whole texts refuses NULs, which end the pieces here.
  while (!text.empty()) {
    const size_t end = std::min(text.find('\0'), text.size());
    if (!g_utf8_validate_len(text.data(), end, nullptr)) return false;
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return true;
}

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<uint8_t>(c) < 0x80; });
}

char32_t NextCharacter(std::string_view text, size_t& position) {
  const uint8_t lead = ByteAt(text, position);
  const size_t length = LengthOf(lead);
  char32_t character = length == 1 ? lead : lead & (0x7Fu >> length);
  for (size_t i = 1; i < length; ++i) {
    character = character << 6 | (ByteAt(text, position + i) & 0x3Fu);
  }
  position += length;
  return character;
}

void AppendUtf8(std::string& text, char32_t character) {
  if (character > 0x10FFFF || (character >= 0xD800 && character < 0xE000)) character = 0xFFFD;
  const auto continuation = [&](int shift) {
    text += static_cast<char>(0x80 | (character >> shift & 0x3F));
  };
  if (character < 0x80) {
    text += static_cast<char>(character);
  } else if (character < 0x800) {
    text += static_cast<char>(0xC0 | character >> 6);
    continuation(0);
  } else if (character < 0x10000) {
    text += static_cast<char>(0xE0 | character >> 12);
    continuation(6);
    continuation(0);
  } else {
    text += static_cast<char>(0xF0 | character >> 18);
    continuation(12);
    continuation(6);
    continuation(0);
  }
}

std::string_view WithoutCutCharacter(std::string_view text) {
  size_t lead = text.size();
  for (size_t back = 1; back <= 4 && back <= text.size(); ++back) {
    lead = text.size() - back;
    if (!IsContinuation(ByteAt(text, lead))) break;
  }
  if (lead == text.size() || ByteAt(text, lead) < 0xC2) return text;
  const bool whole = lead + LengthOf(ByteAt(text, lead)) <= text.size();
  return whole ? text : text.substr(0, lead);
}

void AppendWindows1252(std::string& text, std::string_view bytes) {
  for (const char c : bytes) {
    const auto byte = static_cast<uint8_t>(c);
    if (byte < 0x80) {
      text += c;
    } else {
      AppendUtf8(text, byte < 0xA0 ? char32_t{kWindows1252[byte - 0x80u]} : char32_t{byte});
    }
  }
}

void AppendUtf16(std::string& text, std::string_view bytes, ByteOrder order) {
  const size_t high = order == ByteOrder::Little ? 1 : 0;
  const auto unitAt = [&](size_t position) -> char32_t {
    return static_cast<char32_t>(ByteAt(bytes, position + high) << 8 |
                                 ByteAt(bytes, position + 1 - high));
  };
  for (size_t position = 0; position + 1 < bytes.size(); position += 2) {
    char32_t unit = unitAt(position);
    if (IsHighSurrogate(unit) && position + 3 < bytes.size() &&
        IsLowSurrogate(unitAt(position + 2))) {
      unit = 0x10000 + ((unit - 0xD800) << 10) + (unitAt(position + 2) - 0xDC00);
      position += 2;
    }
    AppendUtf8(text, unit);
  }
}

void AppendLines(std::string& text, std::string_view bytes) {
  while (!bytes.empty()) {
    const size_t end = std::min(bytes.find('\n'), bytes.size() - 1) + 1;
    const std::string_view line = bytes.substr(0, end);
    if (IsUtf8(line)) {
      text += line;
    } else {
      AppendWindows1252(text, line);
    }
    bytes.remove_prefix(end);
  }
}

}  // namespace tarn::pages
