#include "render/EmlDocument.h"

#include <algorithm>

#include "Common/ByteSearch.h"
#include "render/EmlLiterals.h"
#include "render/HeaderBlock.h"
#include "render/Renderer.h"
#include "render/RtfSplice.h"

namespace tarn {
namespace {

// The row of a table that serves a kind of document, or null.
template <typename Table>
const typename Table::value_type* FindKind(const Table& table, TarnDocumentKind kind) {
  const auto row = std::find_if(table.begin(), table.end(),
                                [&](const auto& texts) { return texts.kind == kind; });
  return row != table.end() ? &*row : nullptr;
}

void WriteEscaped(TextWriter& block, std::string_view text) {
  const auto brackets =
      std::count_if(text.begin(), text.end(), [](char byte) { return byte == '<' || byte == '>'; });
  const uint64_t escaped = text.size() + 3 * static_cast<uint64_t>(brackets);
  block.reserve(block.view().size() + escaped);
  while (!text.empty()) {
    const size_t bracket = std::min(text.find_first_of("<>"), text.size());
    block.write(text.substr(0, bracket));
    text.remove_prefix(bracket);
    if (text.empty()) break;
    block.write(text.front() == '<' ? "&lt;" : "&gt;");
    text.remove_prefix(1);
  }
}

Status BuildBlock(const EmlMessage& message, TextWriter& block) {
  const EmlTails* const tails = FindKind(kEmlTails, message.documentKind);
  if (tails == nullptr) return StatusNotSupported;

  if (message.documentKind == DocumentHtml) block.write(kHtmlTableOpen);
  for (const HeaderField<EmlMessage>& field : kEmlRows) {
    const Status written =
        AppendEmlHeaderRow(block, message.*field.text, message.documentKind, field.row);
    if (!written.ok()) return written;
  }
  block.write(tails->block);
  return block.status();
}

// Puts the body between "<html>" and "</html>", a terminating NUL after both. False without
// memory.
bool WrapInHtmlElement(SizedBytes& body) {
  const uint64_t oldLength = body.length();
  const uint64_t textSize = body.text().size();
  const uint64_t length = oldLength + kHtmlOpen.size() + kHtmlClose.size();
  return body.overwrite(length, [&](char* block) {
    char* const content = block + kHtmlOpen.size();
    std::memmove(content, block, textSize);
    kHtmlOpen.copy(block, kHtmlOpen.size());
    kHtmlClose.copy(content + textSize, kHtmlClose.size());
    if (textSize != oldLength) block[length - 1] = '\0';
    return length;
  });
}

Status Insert(SizedBytes& body, uint64_t offset, std::string_view block) {
  return body.splice(offset, 0, block).ok() ? StatusOk : StatusOutOfMemory;
}

Status InsertIntoHtml(SizedBytes& body, std::string_view block) {
  const size_t place = FindSplicePoint(body.view());
  if (place == std::string_view::npos) return StatusNotSupported;
  if (OpensWithHtmlElement(body.view())) return Insert(body, place, block);
  if (!WrapInHtmlElement(body)) return StatusOutOfMemory;
  return Insert(body, place + kHtmlOpen.size(), block);
}

// The block goes after the mark "+/v" that precedes 7-bit content. One matching byte of the three
// is enough, so that a text that merely starts with a "+" is opened three bytes in; readers of such
// documents know it so. The length that is compared counts a terminating NUL.
Status InsertIntoText(SizedBytes& body, std::string_view block) {
  const std::string_view text = body.view();
  const bool marked = text.size() > 3 && (text[0] == '+' || text[1] == '/' || text[2] == 'v');
  return Insert(body, marked ? 3 : 0, block);
}

Status InsertIntoBody(EmlMessage& message, TextWriter& block) {
  if (message.documentKind == DocumentHtml) return InsertIntoHtml(message.body, block.view());
  if (message.documentKind == DocumentText) return InsertIntoText(message.body, block.view());
  SizedBytes rtf;
  block.moveInto(rtf);
  return SpliceEmlRtf(message.body, std::move(rtf));
}

}  // namespace

Status AppendEmlHeaderRow(TextWriter& block, const SizedBytes& field, TarnDocumentKind kind,
                          HeaderRow row) {
  const std::string_view text = field.text();
  if (text.empty()) return StatusOk;
  if (kind == DocumentNone) return StatusTimeFailed;
  const EmlRowOpeners* const openers = FindKind(kEmlRowOpeners, kind);
  const EmlTails* const tails = FindKind(kEmlTails, kind);
  const auto index = static_cast<size_t>(row);
  if (openers == nullptr || tails == nullptr || index >= openers->texts.size()) {
    return StatusNotSupported;
  }

  block.write(openers->texts[index]);
  if (kind == DocumentHtml) {
    WriteEscaped(block, text.substr(0, text.find('\0')));
  } else {
    block.write(text);
  }
  block.write(tails->row);
  return block.status();
}

Status RenderEmlMessage(EmlMessage& message) {
  if (message.documentKind == DocumentNone) return StatusOk;
  if (message.from.isEmptyText() && message.to.isEmptyText() && message.date.isEmptyText() &&
      message.cc.isEmptyText()) {
    return StatusOk;
  }

  TextWriter block;
  if (const Status built = BuildBlock(message, block); !built.ok()) return built;
  return InsertIntoBody(message, block);
}

}  // namespace tarn
