#include "render/HtmlDocument.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "Common/ByteSearch.h"
#include "Common/TextWriter.h"
#include "eml/Charsets.h"
#include "eml/HeaderSearch.h"
#include "render/BodyRoom.h"
#include "render/HeaderBlock.h"

namespace tarn {
namespace {

constexpr std::string_view kRowHead =
    "\n<tr><td style = 'width:87pt; padding: 0px; vertical-align:top'><b><span style = "
    "'font-family:\"Calibri\",\"sans-serif\";mso-bidi-font-family:Calibri; color:black'>";
constexpr std::string_view kRowMiddle =
    "</span></b></td><td style = 'padding: 0px'><span style = "
    "'font-family:\"Calibri\",\"sans-serif\";mso-bidi-font-family:Calibri; color:black; "
    "word-wrap: break-word;'>";

// After the sender's name: whom the sender wrote for, or else the sender's address.
void WriteFromDecoration(TextWriter& block, const MailMessage& message) {
  const std::string_view author = message.originalAuthor.text();
  if (!author.empty() && author != message.from.text()) {
    block.write(" on behalf of ");
    block.write(author);
    return;
  }
  const std::string_view address = message.fromAddress.text();
  if (address.empty() || address.front() == '\0') return;
  block.write(" &lt;");
  block.write(address);
  block.write("&gt;");
}

void WriteRow(TextWriter& block, const MailMessage& message,
              const HeaderField<MailMessage>& field) {
  const std::string_view text = (message.*field.text).text();
  if (text.empty()) return;

  if (block.view().empty()) block.write(kHtmlTableOpen);
  block.write(kRowHead);
  block.write(GetHeaderLabel(field.row));
  block.write(kRowMiddle);
  block.write(text);
  if (field.row == HeaderRowFrom) WriteFromDecoration(block, message);
  block.write(kHtmlRowTail);
}

bool IsAscii(std::string_view text) {
  return std::none_of(text.begin(), text.end(),
                      [](char byte) { return static_cast<unsigned char>(byte) >= 0x80; });
}

// The value of the first meta element that has a "charset=", or nothing.
std::optional<CharsetRef> FindDeclaredCharset(std::string_view html) {
  for (;;) {
    const size_t meta = FindIgnoringCase(html, "<meta");
    if (meta == std::string_view::npos) return std::nullopt;
    html.remove_prefix(meta);
    const size_t close = FindByte(html, '>');
    const auto name = FindHeaderParameter(html.substr(0, close), "charset=");
    if (name) return ClassifyCharset(*name);
    html.remove_prefix(std::min(close, html.size()));
  }
}

// Labels are UTF-8, so a body under labels beyond ASCII has to be UTF-8 as well. Only the first
// declaration is looked at.
Status AlignCharset(std::string_view block, SizedBytes& body) {
  if (IsAscii(block)) return StatusOk;
  std::optional<CharsetRef> charset = FindDeclaredCharset(body.view());
  if (!charset || charset->kind == CharsetUtf8) return StatusOk;
  return ConvertBodyToUtf8(&body, &*charset, true);
}

Status InsertIntoBody(SizedBytes& body, std::string_view block) {
  const size_t place = FindSplicePoint(body.view());
  if (place == std::string_view::npos) return StatusNotSupported;
  const uint64_t oldLength = body.length();
  return RewriteBody(body, oldLength + block.size() + 1, 0, [&](char* text) {
    std::memmove(text + place + block.size(), text + place, oldLength - place);
    block.copy(text + place, block.size());
    return oldLength + block.size();
  });
}

}  // namespace

size_t FindSplicePoint(std::string_view html) {
  const size_t body = FindBytes(html, "<body");
  if (body == std::string_view::npos) return 0;
  const size_t close = FindByte(html, '>', body);
  return close != std::string_view::npos ? close + 1 : close;
}

bool OpensWithHtmlElement(std::string_view html) {
  const size_t first = html.find_first_not_of(" \r\n");
  return first != std::string_view::npos && html[first] == '<' &&
         EqualsIgnoringCase(html.substr(first + 1, 4), "html");
}

Status RenderMailHtml(MailMessage& message) {
  TextWriter block;
  for (const HeaderField<MailMessage>& field : kMailRows) WriteRow(block, message, field);
  if (block.status().ok() && block.view().empty()) return StatusOk;
  block.write(kHtmlBlockTail);
  if (!block.status().ok()) return block.status();

  if (const Status aligned = AlignCharset(block.view(), message.body); !aligned.ok()) {
    return aligned;
  }
  return InsertIntoBody(message.body, block.view());
}

}  // namespace tarn
