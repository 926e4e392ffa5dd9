#include "render/HtmlDocument.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "Common/ByteSearch.h"
#include "eml/Charsets.h"
#include "eml/HeaderSearch.h"
#include "render/BlockWriter.h"
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

// Behind the sender's name: whom the sender wrote for, or else the sender's address.
void WriteFromDecoration(BlockWriter& block, const MailMessage& message) {
  const SizedBytes& author = message.originalAuthor;
  if (!HasNoText(author) && author.text() != message.from.text()) {
    block.write(" on behalf of ");
    block.writeField(author);
    return;
  }
  const std::string_view address = message.fromAddress.view();
  if (address.empty() || address.front() == '\0') return;
  block.write(" &lt;");
  block.writeField(message.fromAddress);
  block.write("&gt;");
}

void WriteRow(BlockWriter& block, const MailMessage& message,
              const HeaderField<MailMessage>& field) {
  const SizedBytes& text = message.*field.text;
  if (HasNoText(text)) return;

  if (block.text().empty()) block.write(kHtmlTableOpen);
  block.write(kRowHead);
  block.write(GetHeaderLabel(field.row));
  block.write(kRowMiddle);
  block.writeField(text);
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
int32_t AlignCharset(std::string_view block, SizedBytes& body) {
  if (IsAscii(block)) return StatusOk;
  std::optional<CharsetRef> charset = FindDeclaredCharset(body.view());
  if (!charset || charset->kind == CharsetUtf8) return StatusOk;
  return ConvertBodyToUtf8(&body, &*charset, true);
}

int32_t InsertBlock(SizedBytes& body, std::string_view block) {
  if (body.data() == nullptr && body.length() != 0) return StatusNullArgument;
  uint64_t offset = 0;
  if (!FindSplicePoint(body.view(), offset)) return StatusNotSupported;

  const int32_t made = MakeRoomInBody(body, body.length() + block.size() + 1, 0);
  if (made != StatusOk) return made;
  char* const at = body.data() + offset;
  std::memmove(at + block.size(), at, body.length() - offset);
  block.copy(at, block.size());
  body.setLength(body.length() + block.size());
  TerminateBody(body);
  return StatusOk;
}

}  // namespace

bool FindSplicePoint(std::string_view html, uint64_t& offset) {
  const char* const start = html.data();
  const char* const end = start + html.size();
  offset = 0;
  const char* const body = FindBytes(start, end, "<body");
  if (body == nullptr) return true;

  const char* const close = FindByte(body, end, '>');
  if (close == nullptr) return false;
  offset = static_cast<uint64_t>(close + 1 - start);
  return true;
}

bool OpensWithHtmlElement(std::string_view html) {
  const size_t first = html.find_first_not_of(" \r\n");
  return first != std::string_view::npos && html[first] == '<' &&
         EqualsIgnoringCase(html.substr(first + 1, 4), "html");
}

int32_t RenderMailHtml(MailMessage& message) {
  BlockWriter block;
  for (const HeaderField<MailMessage>& field : kMailRows) {
    WriteRow(block, message, field);
    if (block.status() != StatusOk) return block.status();
  }
  if (block.text().empty()) return StatusOk;
  block.write(kHtmlBlockTail);
  if (block.status() != StatusOk) return block.status();

  const int32_t aligned = AlignCharset(block.text(), message.body);
  if (aligned != StatusOk) return aligned;
  return InsertBlock(message.body, block.text());
}

}  // namespace tarn
