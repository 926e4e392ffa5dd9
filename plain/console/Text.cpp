#include "Text.h"

#include <charconv>
#include <cstdio>
#include <ctime>

#include "Platform/Characters.h"
#include "Platform/LocalTime.h"
#include "Platform/Utf8.h"
#include "Tarnbase/Kernel.h"

namespace tarn::host {
namespace {

// What misleads a terminal and is no control; without the mark that a text may begin with.
constexpr platform::CodePointRange kTurning[] = {
    {0x061C, 0x061C}, {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069}};

// Calls `visit` with each character and its bytes; what is no UTF-8 comes byte by byte. Ends early,
// and then answers false, when `visit` does.
template <typename Visit>
bool ForEachCharacter(std::string_view text, Visit visit) {
  while (!text.empty()) {
    platform::Character character = platform::FirstCharacter(text);
    if (!character.isWellFormed) character.size = 1;
    if (!visit(character, text.substr(0, character.size))) return false;
    text.remove_prefix(character.size);
  }
  return true;
}

// `number` as "\x1b" with two digits or "\u202e" with four.
std::string HexEscape(char kind, uint32_t number) {
  char text[16];
  std::snprintf(text, sizeof text, kind == 'x' ? "\\x%02x" : "\\u%04x", number);
  return text;
}

// One character in the form that a terminal shows.
std::string Shown(const platform::Character& character, std::string_view bytes) {
  const char32_t codePoint = character.codePoint;
  if (bytes == "\n") return "\\n";
  if (bytes == "\t") return "\\t";
  if (!character.isWellFormed || codePoint < 0x20 || codePoint == 0x7F) {
    return HexEscape('x', static_cast<unsigned char>(bytes[0]));
  }
  return platform::MisleadsTerminals(codePoint) ? HexEscape('u', codePoint) : std::string(bytes);
}

}  // namespace

std::string Utf8FromWide(std::u16string_view text) {
  std::string utf8(text.size() * 3, '\0');
  const int64_t written = KernelWideToUtf8(text.data(), static_cast<int64_t>(text.size()),
                                           utf8.data(), static_cast<int64_t>(utf8.size()));
  utf8.resize(static_cast<size_t>(written));
  return utf8;
}

std::optional<std::u16string> WideFromUtf8(std::string_view text) {
  if (text.find('\0') != std::string_view::npos) return std::nullopt;
  std::u16string wide(text.size(), u'\0');
  const int64_t written = KernelUtf8ToWide(text.data(), static_cast<int64_t>(text.size()),
                                           wide.data(), static_cast<int64_t>(wide.size()));
  if (written == 0 && !text.empty()) return std::nullopt;
  wide.resize(static_cast<size_t>(written));
  return wide;
}

std::string Printable(std::string_view text) {
  std::string shown;
  ForEachCharacter(text, [&shown](const platform::Character& character, std::string_view bytes) {
    shown += Shown(character, bytes);
    return true;
  });
  return shown;
}

std::string ShowableJson(std::string_view json) {
  std::string shown;
  shown.reserve(json.size());
  ForEachCharacter(json, [&shown](const platform::Character& character, std::string_view bytes) {
    // Of controls only line ends are in JSON, between the values.
    if (bytes == "\n" || !platform::MisleadsTerminals(character.codePoint)) {
      shown += bytes;
    } else {
      shown += HexEscape('u', character.codePoint);
    }
    return true;
  });
  return shown;
}

bool IsPlainText(std::string_view text) {
  constexpr std::u32string_view kHarmless = U"\t\n\f\r";
  return ForEachCharacter(text, [&](const platform::Character& character, std::string_view) {
    const char32_t codePoint = character.codePoint;
    const bool isControl = codePoint < 0x20 || (codePoint >= 0x7F && codePoint < 0xA0);
    const bool isHarmless = kHarmless.find(codePoint) != std::u32string_view::npos;
    return character.isWellFormed && (!isControl || isHarmless) &&
           !platform::IsIn(kTurning, codePoint);
  });
}

size_t DisplayWidth(std::string_view text) {
  size_t width = 0;
  ForEachCharacter(text, [&width](const platform::Character& character, std::string_view) {
    width += platform::TerminalColumns(character.codePoint);
    return true;
  });
  return width;
}

std::optional<std::string> LocalTimeText(int64_t secondsSince1970) {
  constexpr int kFirstYear = 1900;
  std::tm fields = {};
  if (!platform::BreakDownLocalTime(secondsSince1970, fields)) return std::nullopt;
  const int64_t year = int64_t{kFirstYear} + fields.tm_year;
  if (year < 1 || year > 9999) return std::nullopt;

  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d", static_cast<int>(year),
                fields.tm_mon + 1, fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec);
  return text;
}

bool IsNumber(std::string_view text) {
  if (!text.empty() && text[0] == '-') text.remove_prefix(1);
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

std::optional<int32_t> ParseNumber(std::string_view text) {
  int32_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

std::optional<uint32_t> ParseLangId(std::string_view text) {
  const bool hexadecimal = text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X";
  if (hexadecimal) text.remove_prefix(2);
  uint32_t langId = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, langId, hexadecimal ? 16 : 10);
  if (error != std::errc() || stop != end || langId > 0xFFFF) return std::nullopt;
  return langId;
}

}  // namespace tarn::host
