#include "Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <ctime>

#include "Platform/LocalTime.h"
#include "Tarnbase/Kernel.h"

namespace tarn::host {
namespace {

struct CodePointRange {
  char32_t first;
  char32_t last;
};

constexpr std::array kZeroWidth = {
    CodePointRange{0x0300, 0x036F}, CodePointRange{0x0483, 0x0489}, CodePointRange{0x0591, 0x05BD},
    CodePointRange{0x0610, 0x061A}, CodePointRange{0x064B, 0x065F}, CodePointRange{0x0E31, 0x0E31},
    CodePointRange{0x0E34, 0x0E3A}, CodePointRange{0x0E47, 0x0E4E}, CodePointRange{0x1AB0, 0x1AFF},
    CodePointRange{0x1DC0, 0x1DFF}, CodePointRange{0x200B, 0x200D}, CodePointRange{0x20D0, 0x20FF},
    CodePointRange{0x3099, 0x309A}, CodePointRange{0xFE00, 0xFE0F}, CodePointRange{0xFE20, 0xFE2F},
};

constexpr std::array kTwoColumns = {
    CodePointRange{0x1100, 0x115F},   CodePointRange{0x2E80, 0x303E},
    CodePointRange{0x3041, 0xA4CF},   CodePointRange{0xAC00, 0xD7A3},
    CodePointRange{0xF900, 0xFAFF},   CodePointRange{0xFE30, 0xFE6F},
    CodePointRange{0xFF00, 0xFF60},   CodePointRange{0xFFE0, 0xFFE6},
    CodePointRange{0x1F300, 0x1F64F}, CodePointRange{0x1F680, 0x1F6FF},
    CodePointRange{0x1F900, 0x1F9FF}, CodePointRange{0x20000, 0x3FFFD},
};

// C1 controls, separators that break a line, and marks that change the direction of writing.
constexpr std::array kEscaped = {
    CodePointRange{0x0080, 0x009F}, CodePointRange{0x061C, 0x061C}, CodePointRange{0x200E, 0x200F},
    CodePointRange{0x2028, 0x202E}, CodePointRange{0x2066, 0x2069}, CodePointRange{0xFEFF, 0xFEFF},
};

template <size_t N>
bool IsIn(const std::array<CodePointRange, N>& ranges, char32_t codePoint) {
  return std::any_of(ranges.begin(), ranges.end(), [codePoint](const CodePointRange& range) {
    return codePoint >= range.first && codePoint <= range.last;
  });
}

struct Decoded {
  char32_t codePoint;
  size_t bytes;
  bool valid;
};

// The code point that `text`, which is not empty, begins with. Overlong forms, surrogates and
// numbers beyond U+10FFFF are not valid; what is not valid is one byte long.
Decoded DecodeUtf8(std::string_view text) {
  const auto byteAt = [text](size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byteAt(0);
  const Decoded invalid = {lead, 1, false};
  if (lead < 0x80) return {lead, 1, true};
  const size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return invalid;
  char32_t codePoint = lead & (0xFFu >> (length + 1));
  for (size_t i = 1; i < length; ++i) {
    if ((byteAt(i) & 0xC0) != 0x80) return invalid;
    codePoint = (codePoint << 6) | (byteAt(i) & 0x3Fu);
  }
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
  if (codePoint < kSmallest[length] || surrogate || codePoint > 0x10FFFF) return invalid;
  return {codePoint, length, true};
}

// `codePoint` as "\x1b" with two digits or "\u202e" with four.
std::string HexEscape(char kind, char32_t codePoint) {
  char text[16];
  std::snprintf(text, sizeof text, kind == 'x' ? "\\x%02x" : "\\u%04x",
                static_cast<unsigned>(codePoint));
  return text;
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
  while (!text.empty()) {
    const Decoded decoded = DecodeUtf8(text);
    if (decoded.valid && decoded.codePoint == U'\n') {
      shown += "\\n";
    } else if (decoded.valid && decoded.codePoint == U'\t') {
      shown += "\\t";
    } else if (!decoded.valid || decoded.codePoint < 0x20 || decoded.codePoint == 0x7F) {
      shown += HexEscape('x', decoded.codePoint);
    } else if (IsIn(kEscaped, decoded.codePoint)) {
      shown += HexEscape('u', decoded.codePoint);
    } else {
      shown += text.substr(0, decoded.bytes);
    }
    text.remove_prefix(decoded.bytes);
  }
  return shown;
}

bool IsPlainText(std::string_view text) {
  constexpr std::u32string_view kHarmless = U"\t\n\f\r";
  while (!text.empty()) {
    const Decoded decoded = DecodeUtf8(text);
    const char32_t codePoint = decoded.codePoint;
    const bool isControl = codePoint < 0x20 || (codePoint >= 0x7F && codePoint < 0xA0);
    const bool isHarmless = kHarmless.find(codePoint) != std::u32string_view::npos;
    if (!decoded.valid || (isControl && !isHarmless)) return false;
    text.remove_prefix(decoded.bytes);
  }
  return true;
}

size_t DisplayWidth(std::string_view text) {
  size_t width = 0;
  while (!text.empty()) {
    const Decoded decoded = DecodeUtf8(text);
    if (!IsIn(kZeroWidth, decoded.codePoint)) width += IsIn(kTwoColumns, decoded.codePoint) ? 2 : 1;
    text.remove_prefix(decoded.bytes);
  }
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
