#include "archive/writers/TextLinks.h"

#include <algorithm>

#include "archive/text/AsciiText.h"
#include "archive/text/HtmlTokens.h"

namespace tarn::archive {
namespace {

constexpr std::string_view kSchemes[] = {"https://", "http://", "mailto:"};

constexpr std::string_view kEndsAddress(" \t\n\r\f\"<>`\0", 10);

// Ends of sentences, of brackets and of quotes are no ends of addresses.
constexpr std::string_view kAfterAddress = ".,;:!?'*_";

void PutLinked(std::string_view text, SinkBuffer& out) {
  size_t done = 0;
  for (size_t at = 0; (at = text.find(':', at)) != text.npos; ++at) {
    // The scheme is before the colon.
    std::string_view address;
    for (const std::string_view scheme : kSchemes) {
      const size_t before = scheme.find(':');
      if (at < done + before) continue;
      address = AddressAt(text.substr(at - before));
      if (address.empty()) continue;
      at -= before;
      break;
    }
    if (address.empty()) continue;
    const std::string escaped = EscapedHtml(address);
    out.put(EscapedHtml(text.substr(done, at - done)))
        .put("<a href=\"")
        .put(escaped)
        .put("\" rel=\"noopener noreferrer\" target=\"_blank\">")
        .put(escaped)
        .put("</a>");
    done = at + address.size();
    at = done - 1;
  }
  out.put(EscapedHtml(text.substr(done)));
}

}  // namespace

std::string_view AddressAt(std::string_view text) {
  for (const std::string_view scheme : kSchemes) {
    if (!StartsWithNoCase(text, scheme)) continue;
    std::string_view address = text.substr(0, text.find_first_of(kEndsAddress));
    std::string after(kAfterAddress);
    if (address.find('(') == address.npos) after += ')';
    if (address.find('[') == address.npos) after += ']';
    address = address.substr(0, std::max(scheme.size(), address.find_last_not_of(after) + 1));
    if (address.size() > scheme.size()) return address;
  }
  return {};
}

void PutParagraphs(std::string_view text, SinkBuffer& out) {
  while (!text.empty() && !out.isFull()) {
    text.remove_prefix(std::min(text.find_first_not_of('\n'), text.size()));
    if (text.empty()) break;
    const size_t end = std::min(text.find("\n\n"), text.size());
    std::string_view paragraph = text.substr(0, end);
    text.remove_prefix(end);
    while (!paragraph.empty() && paragraph.back() == '\n') paragraph.remove_suffix(1);
    out.put("<p>");
    PutLinked(paragraph, out);
    out.put("</p>\n");
  }
}

}  // namespace tarn::archive
