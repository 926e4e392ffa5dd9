#include "archive/text/Charsets.h"

#define U_SHOW_CPLUSPLUS_API 0
#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "Platform/CodePages.h"
#include "Platform/Utf8.h"
#include "archive/text/AsciiText.h"
#include "archive/text/BodyText.h"
#include "archive/text/CharsetTables.h"
#include "archive/text/CountWhile.h"

namespace tarn::archive {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr uint32_t kJohab = 1361;

constexpr std::string_view kAroundNames = " \t\r\n\"'";

// "windows-1252", "cp1252", "x-cp1252", "cp-1252", "ms936" and "1252" alike; 0 for others.
uint32_t NumberOfName(std::string_view name) {
  for (const std::string_view prefix : {"x-", "windows", "cp", "ms", "-", "_"}) {
    if (name.starts_with(prefix)) name.remove_prefix(prefix.size());
  }
  uint32_t number = 0;
  const char* const end = name.data() + name.size();
  const auto [stop, error] = std::from_chars(name.data(), end, number);
  return error == std::errc() && stop == end ? number : 0;
}

uint32_t CodePageOfName(std::string_view name) {
  for (const CharsetAlias& alias : kCharsetAliases) {
    if (alias.name == name) return alias.codePage;
  }
  return NumberOfName(name);
}

// A bad sequence is one replacement, of whatever width.
void U_CALLCONV Replace(const void*, UConverterToUnicodeArgs* arguments, const char*, int32_t,
                        UConverterCallbackReason reason, UErrorCode* error) {
  if (reason > UCNV_IRREGULAR) return;
  constexpr UChar kUnit = 0xFFFD;
  *error = U_ZERO_ERROR;
  ucnv_cbToUWriteUChars(arguments, &kUnit, 1, 0, error);
}

}  // namespace

void CharsetDecoder::Close::operator()(UConverter* converter) const { ucnv_close(converter); }

std::optional<CharsetDecoder> CharsetDecoder::ForTable(const char* name, Kind kind) {
  UErrorCode error = U_ZERO_ERROR;
  CharsetDecoder decoder(kind);
  decoder.table_.reset(ucnv_open(name, &error));
  if (decoder.table_ == nullptr) return std::nullopt;
  ucnv_setToUCallBack(decoder.table_.get(), Replace, nullptr, nullptr, nullptr, &error);
  if (U_FAILURE(error)) return std::nullopt;
  return decoder;
}

std::optional<CharsetDecoder> CharsetDecoder::ForCodePage(uint32_t codePage) {
  switch (codePage) {
    case 65001:
      return CharsetDecoder(Kind::Utf8);
    case 1200:
      return CharsetDecoder(Kind::Utf16Little);
    case 1201:
      return CharsetDecoder(Kind::Utf16Big);
    case kJohab:
      return CharsetDecoder(Kind::Johab);
    case 50220:
    case 50221:
    case 50222:
      return ForTable(kShiftJis, Kind::JapaneseMail);
    default:
      break;
  }
  const auto* const row = std::lower_bound(
      std::begin(kCodePageTables), std::end(kCodePageTables), codePage,
      [](const CodePageTable& each, uint32_t wanted) { return each.codePage < wanted; });
  if (row == std::end(kCodePageTables) || row->codePage != codePage) return std::nullopt;
  return ForTable(row->table);
}

std::optional<CharsetDecoder> CharsetDecoder::ForName(std::string_view name) {
  constexpr size_t kLongestName = 64;
  const std::string lower = LoweredAscii(Trimmed(name, kAroundNames));
  if (lower.empty() || lower.size() > kLongestName) return std::nullopt;
  if (std::find(std::begin(kUtf16Names), std::end(kUtf16Names), lower) != std::end(kUtf16Names)) {
    return CharsetDecoder(Kind::Utf16);
  }
  if (const uint32_t number = CodePageOfName(lower); number != 0) return ForCodePage(number);
  // ICU takes options after a comma.
  if (lower.find_first_of(",\\/") != std::string::npos) return std::nullopt;
  std::optional<CharsetDecoder> decoder = ForTable(lower.c_str());
  if (!decoder) return std::nullopt;
  UErrorCode error = U_ZERO_ERROR;
  const char* const table = ucnv_getName(decoder->table_.get(), &error);
  if (U_FAILURE(error) || std::string_view(table) == "US-ASCII") return std::nullopt;
  if (std::string_view(table) == "ISO-8859-1") return ForCodePage(1252);
  return decoder;
}

void CharsetDecoder::append(std::string_view bytes, std::string& utf8) {
  switch (kind_) {
    case Kind::Utf8:
      return AppendUtf8(bytes, utf8);
    case Kind::Utf16:
      return AppendUtf16(bytes, ByteOrder::Unknown, utf8);
    case Kind::Utf16Little:
      return AppendUtf16(bytes, ByteOrder::Little, utf8);
    case Kind::Utf16Big:
      return AppendUtf16(bytes, ByteOrder::Big, utf8);
    case Kind::JapaneseMail:
      return appendTable(ShiftJisOfIso2022Jp(bytes), utf8);
    case Kind::Table:
      return appendTable(bytes, utf8);
    case Kind::Johab:
      break;
  }
  std::u16string wide(platform::BytesToUtf16(kJohab, bytes, {}), u'\0');
  platform::BytesToUtf16(kJohab, bytes, wide);
  std::u16string_view rest = wide;
  while (!rest.empty()) {
    const platform::Character character = platform::FirstCharacter(rest);
    AppendCharacter(character.codePoint, utf8);
    rest.remove_prefix(character.size);
  }
}

// Piece by piece, so that no size is beyond what ICU counts in.
void CharsetDecoder::appendTable(std::string_view bytes, std::string& utf8) {
  std::array<UChar, 1024> units;
  char16_t high = 0;  // of a pair whose other half is in the next piece
  // cppcheck-suppress danglingTemporaryLifetime ; the view is a parameter
  const char* from = bytes.data();
  const char* const end = from + bytes.size();
  ucnv_resetToUnicode(table_.get());
  UErrorCode error = U_BUFFER_OVERFLOW_ERROR;
  while (error == U_BUFFER_OVERFLOW_ERROR) {
    error = U_ZERO_ERROR;
    UChar* to = units.data();
    ucnv_toUnicode(table_.get(), &to, units.data() + units.size(), &from, end, nullptr, 1, &error);
    for (const UChar* unit = units.data(); unit != to; ++unit) {
      const bool isLow = (*unit & 0xFC00) == 0xDC00;
      if (high != 0 && !isLow) utf8 += kReplacement;
      if ((*unit & 0xFC00) == 0xD800) {
        high = *unit;
        continue;
      }
      if (isLow && high != 0) {
        const char16_t pair[] = {high, *unit};
        AppendCharacter(platform::FirstCharacter(std::u16string_view(pair, 2)).codePoint, utf8);
      } else {
        AppendCharacter(isLow ? platform::kReplacementCharacter : *unit, utf8);
      }
      high = 0;
    }
  }
  if (high != 0 || U_FAILURE(error)) utf8 += kReplacement;
}

void AppendCharacter(char32_t codePoint, std::string& utf8) {
  std::array<char, 4> bytes;
  utf8.append(bytes.data(), platform::WriteCharacter(codePoint, bytes));
}

void AppendUtf8(std::string_view bytes, std::string& utf8) {
  if (bytes.starts_with(kUtf8Mark)) bytes.remove_prefix(kUtf8Mark.size());
  size_t whole = 0;  // bytes seen that are as they should be
  while (whole < bytes.size()) {
    whole += CountAscii(bytes.substr(whole));
    if (whole == bytes.size()) break;
    const platform::Character character = platform::FirstCharacter(bytes.substr(whole));
    if (character.isWellFormed) {
      whole += character.size;
      continue;
    }
    utf8.append(bytes.substr(0, whole)).append(kReplacement);
    bytes.remove_prefix(whole + character.size);
    whole = 0;
  }
  utf8 += bytes;
}

void AppendUtf16(std::string_view bytes, ByteOrder order, std::string& utf8) {
  constexpr size_t kSample = 4096;
  bool isBigEndian = order == ByteOrder::Big;
  if (bytes.starts_with("\xFE\xFF") || bytes.starts_with("\xFF\xFE")) {
    isBigEndian = bytes.starts_with("\xFE");
    bytes.remove_prefix(2);
  } else if (order == ByteOrder::Unknown) {
    std::array<size_t, 2> zeros = {};
    for (size_t at = 0; at < std::min(bytes.size(), kSample); ++at) {
      if (bytes[at] == '\0') ++zeros[at % 2];
    }
    isBigEndian = zeros[0] > zeros[1];
  }
  const auto unitAt = [&](size_t at) {
    const auto first = static_cast<unsigned char>(bytes[at]);
    const auto second = static_cast<unsigned char>(bytes[at + 1]);
    return static_cast<char16_t>(isBigEndian ? first << 8 | second : second << 8 | first);
  };
  for (size_t at = 0; at + 1 < bytes.size();) {
    std::array<char16_t, 2> units = {unitAt(at), 0};
    const size_t count = at + 3 < bytes.size() ? 2 : 1;
    if (count == 2) units[1] = unitAt(at + 2);
    const auto character = platform::FirstCharacter(std::u16string_view(units.data(), count));
    AppendCharacter(character.codePoint, utf8);
    at += 2 * character.size;
  }
  if (bytes.size() % 2 != 0) utf8 += kReplacement;
}

void AppendUnknown(std::string_view bytes, std::string& utf8) {
  std::string_view rest = bytes;
  for (;;) {
    rest.remove_prefix(CountAscii(rest));
    if (rest.empty()) break;
    const platform::Character character = platform::FirstCharacter(rest);
    if (!character.isWellFormed) {
      if (auto western = CharsetDecoder::ForCodePage(1252)) return western->append(bytes, utf8);
      break;
    }
    rest.remove_prefix(character.size);
  }
  AppendUtf8(bytes, utf8);
}

std::string ShiftJisOfIso2022Jp(std::string_view bytes) {
  enum class Set : uint8_t { Roman, Kana, Kanji, Other };
  Set set = Set::Roman;
  std::string shiftJis;
  shiftJis.reserve(bytes.size());
  const auto changeSet = [&](std::string_view escape) {
    if (escape.starts_with("$@") || escape.starts_with("$B")) return set = Set::Kanji, 3;
    if (escape.starts_with("(B") || escape.starts_with("(J")) return set = Set::Roman, 3;
    if (escape.starts_with("(I")) return set = Set::Kana, 3;
    if (escape.starts_with("$(")) return set = Set::Other, 4;
    return 1;
  };
  for (size_t at = 0; at < bytes.size();) {
    const auto byte = static_cast<unsigned char>(bytes[at]);
    if (byte == 0x1B) {
      at += static_cast<size_t>(changeSet(bytes.substr(at + 1)));
      continue;
    }
    // Lines begin in ASCII, whatever the line before them ended in.
    if (byte == '\n' || byte == '\r') set = Set::Roman;
    const bool isOfSet = byte > 0x20 && byte < 0x7F;
    const auto second = static_cast<unsigned char>(at + 1 < bytes.size() ? bytes[at + 1] : 0);
    if (set == Set::Kanji && isOfSet && second > 0x20 && second < 0x7F) {
      const int row = (byte - 0x21) / 2;
      shiftJis += static_cast<char>(row + (row < 31 ? 0x81 : 0xC1));
      const int cell = byte % 2 != 0 ? second + (second < 0x60 ? 0x1F : 0x20) : second + 0x7E;
      shiftJis += static_cast<char>(cell);
      at += 2;
      continue;
    }
    const bool isNone = isOfSet && (set == Set::Kanji || set == Set::Other);
    shiftJis += static_cast<char>(isNone ? 0xFF : set == Set::Kana && isOfSet ? byte | 0x80 : byte);
    ++at;
  }
  return shiftJis;
}

std::string Utf8Of(std::string_view bytes, std::string_view charset) {
  std::string utf8;
  utf8.reserve(bytes.size());
  if (std::optional<CharsetDecoder> decoder = CharsetDecoder::ForName(charset)) {
    decoder->append(bytes, utf8);
  } else {
    AppendUnknown(bytes, utf8);
  }
  return utf8;
}

}  // namespace tarn::archive
