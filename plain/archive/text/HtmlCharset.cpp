#include <algorithm>
#include <optional>

#include "archive/text/AsciiText.h"
#include "archive/text/BodyText.h"
#include "archive/text/Charsets.h"

namespace tarn::archive {
namespace {

// Declarations come before this many bytes, or are none.
constexpr size_t kWhereDeclared = 16384;

std::string_view WithoutSpaceBefore(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(kHtmlSpace), text.size()));
}

// The name after "charset" or "encoding": "=", perhaps quoted, up to what ends it.
std::string_view NameAfter(std::string_view text, std::string_view word) {
  for (size_t at = text.find(word); at != std::string_view::npos; at = text.find(word, at + 1)) {
    std::string_view rest = WithoutSpaceBefore(text.substr(at + word.size()));
    if (!rest.starts_with("=")) continue;
    rest = WithoutSpaceBefore(rest.substr(1));
    const bool isQuoted = rest.starts_with("\"") || rest.starts_with("'");
    if (isQuoted) rest.remove_prefix(1);
    return rest.substr(0, rest.find_first_of("\"'; \t\r\n\f>/"));
  }
  return {};
}

// What the document says of itself: a byte order mark is told by the caller, an XML declaration or
// a "meta" element are found here.
std::string DeclaredCharset(std::string_view html) {
  std::string head(html.substr(0, kWhereDeclared));
  std::transform(head.begin(), head.end(), head.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  const std::string_view lower = head;
  const std::string_view start = WithoutSpaceBefore(lower);
  if (start.starts_with("<?xml")) {
    const std::string_view name = NameAfter(start.substr(0, start.find('>')), "encoding");
    if (!name.empty()) return std::string(name);
  }
  for (size_t at = 0; (at = lower.find('<', at)) != std::string_view::npos; ++at) {
    const std::string_view rest = lower.substr(at);
    if (rest.starts_with("<!--")) {
      at = lower.find("-->", at);
      if (at == std::string_view::npos) break;
    } else if (rest.starts_with("<meta")) {
      const std::string_view name = NameAfter(rest.substr(0, rest.find('>')), "charset");
      if (!name.empty()) return std::string(name);
    }
  }
  return {};
}

// A declaration that could be read byte by byte is of no charset that takes two.
bool IsWide(std::string_view name) {
  return name.starts_with("utf-16") || name.starts_with("utf16") || name.starts_with("unicode") ||
         name.starts_with("ucs-2") || name.starts_with("utf-32");
}

std::string CharsetOf(const HtmlBody& html) {
  const std::string_view bytes = html.bytes;
  if (bytes.starts_with("\xEF\xBB\xBF")) return "utf-8";
  if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) return "utf-16";
  if (CharsetDecoder::ForName(html.charset)) return html.charset;
  const std::string declared = DeclaredCharset(bytes);
  return IsWide(declared) ? "utf-8" : declared;
}

}  // namespace

std::string Utf8OfHtml(const HtmlBody& html) { return Utf8Of(html.bytes, CharsetOf(html)); }

}  // namespace tarn::archive
