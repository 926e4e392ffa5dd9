#include "siblings/layout/HtmlCharset.h"

#include <glib.h>
#include <unicode/ucnv.h>

#include <algorithm>
#include <array>
#include <memory>

#include "siblings/layout/Utf8.h"

namespace tarn::pages {

namespace {

constexpr size_t kMetaBytes = 8'192;

// What browsers read under these names.
struct CharsetAlias {
  std::string_view name;
  const char* meant;
};
constexpr std::array<CharsetAlias, 16> kAliases = {{{"iso-8859-1", "windows-1252"},
                                                    {"iso8859-1", "windows-1252"},
                                                    {"latin1", "windows-1252"},
                                                    {"us-ascii", "windows-1252"},
                                                    {"ascii", "windows-1252"},
                                                    {"iso-8859-9", "windows-1254"},
                                                    {"tis-620", "windows-874"},
                                                    {"iso-8859-11", "windows-874"},
                                                    {"gb2312", "gb18030"},
                                                    {"gb_2312-80", "gb18030"},
                                                    {"gbk", "gb18030"},
                                                    {"x-gbk", "gb18030"},
                                                    {"shift_jis", "windows-31j"},
                                                    {"x-sjis", "windows-31j"},
                                                    {"ks_c_5601-1987", "windows-949"},
                                                    {"euc-kr", "windows-949"}}};

struct CloseConverter {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, CloseConverter>;

bool IsNamed(std::string_view charset, std::initializer_list<std::string_view> names) {
  return std::find(names.begin(), names.end(), charset) != names.end();
}

// False when the system has no such charset.
bool Convert(std::string& text, std::string_view bytes, const char* charset) {
  UErrorCode error = U_ZERO_ERROR;
  const Converter source(ucnv_open(charset, &error));
  const Converter target(ucnv_open("UTF-8", &error));
  if (U_FAILURE(error)) return false;
  std::array<UChar, 2'048> pivot = {};
  UChar* pivotStart = pivot.data();
  UChar* pivotEnd = pivot.data();
  std::array<char, 8'192> out = {};
  const char* from = bytes.data();
  bool reset = true;
  do {
    error = U_ZERO_ERROR;
    char* to = out.data();
    ucnv_convertEx(target.get(), source.get(), &to, out.data() + out.size(), &from,
                   bytes.data() + bytes.size(), pivot.data(), &pivotStart, &pivotEnd,
                   pivot.data() + pivot.size(), reset, true, &error);
    text.append(out.data(), static_cast<size_t>(to - out.data()));
    reset = false;
  } while (error == U_BUFFER_OVERFLOW_ERROR);
  return U_SUCCESS(error);
}

std::string DecodeAs(const std::string& charset, std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  // A document that could be read as far as its meta element is not in UTF-16.
  const bool unicode = IsNamed(charset, {"", "utf-8", "utf8", "unicode-1-1-utf-8"}) ||
                       charset.rfind("utf-16", 0) == 0;
  if (unicode || IsAscii(bytes)) {
    if (IsNamed(charset, {"iso-2022-jp", "hz-gb-2312", "utf-7", "iso-2022-kr"}) &&
        Convert(text, bytes, charset.c_str())) {
      return text;
    }
    text.clear();
    if (charset.empty() && !IsUtf8(bytes)) {
      AppendWindows1252(text, bytes);
    } else {
      AppendLines(text, bytes);
    }
    return text;
  }
  const auto* alias = std::find_if(kAliases.begin(), kAliases.end(),
                                   [&](const CharsetAlias& a) { return a.name == charset; });
  const char* meant = alias == kAliases.end() ? charset.c_str() : alias->meant;
  if (std::string_view(meant) == "windows-1252") {
    AppendWindows1252(text, bytes);
  } else if (!Convert(text, bytes, meant)) {
    return DecodeAs("", bytes);
  }
  return text;
}

}  // namespace

std::string NamedCharset(std::string_view html) {
  html = html.substr(0, kMetaBytes);
  constexpr std::string_view kName = "charset";
  for (size_t at = 0; at + kName.size() < html.size(); ++at) {
    if (g_ascii_strncasecmp(html.data() + at, kName.data(), kName.size()) != 0) continue;
    size_t position = at + kName.size();
    const auto skip = [&](std::string_view characters) {
      position = std::min(html.find_first_not_of(characters, position), html.size());
    };
    skip(" \t\r\n");
    if (position == html.size() || html[position] != '=') continue;
    skip("= \t\r\n\"'");
    std::string name;
    while (position < html.size() &&
           std::string_view(" \t\r\n\"';/>").find(html[position]) == std::string_view::npos) {
      name += g_ascii_tolower(html[position++]);
    }
    if (!name.empty()) return name;
  }
  return {};
}

std::string DecodeHtmlDocument(std::string_view document) {
  std::string text;
  if (document.starts_with("\xFF\xFE") || document.starts_with("\xFE\xFF")) {
    AppendUtf16(text, document.substr(2),
                document.front() == '\xFF' ? ByteOrder::Little : ByteOrder::Big);
    return text;
  }
  if (document.starts_with("\xEF\xBB\xBF")) return DecodeAs("utf-8", document.substr(3));
  return DecodeAs(NamedCharset(document), document);
}

}  // namespace tarn::pages
