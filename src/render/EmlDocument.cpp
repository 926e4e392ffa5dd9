#include "render/EmlDocument.h"

#include <algorithm>

#include "Common/ByteSearch.h"
#include "Common/InlineImages.h"
#include "render/EmlLiterals.h"
#include "render/HeaderBlock.h"
#include "render/Renderer.h"
#include "render/RtfSplice.h"

namespace tarn {
namespace {

// The row of a table that serves a kind of document, or null.
template <typename Table>
const typename Table::value_type* FindKind(const Table& table, uint32_t kind) {
  const auto row = std::find_if(table.begin(), table.end(),
                                [&](const auto& texts) { return texts.kind == kind; });
  return row != table.end() ? &*row : nullptr;
}

void WriteEscaped(BlockWriter& block, std::string_view text) {
  const auto brackets =
      std::count_if(text.begin(), text.end(), [](char byte) { return byte == '<' || byte == '>'; });
  const uint64_t escaped = text.size() + 3 * static_cast<uint64_t>(brackets);
  block.reserve(block.text().size() + escaped);
  while (!text.empty()) {
    const size_t bracket = std::min(text.find_first_of("<>"), text.size());
    block.write(text.substr(0, bracket));
    text.remove_prefix(bracket);
    if (text.empty()) break;
    block.write(text.front() == '<' ? "&lt;" : "&gt;");
    text.remove_prefix(1);
  }
}

int32_t BuildBlock(const EmlMessage& message, BlockWriter& block) {
  const EmlTails* const tails = FindKind(kEmlTails, message.documentKind);
  if (tails == nullptr) return StatusNotSupported;

  if (message.documentKind == DocumentHtml) block.write(kHtmlTableOpen);
  for (const HeaderField<EmlMessage>& field : kEmlRows) {
    const int32_t written =
        AppendEmlHeaderRow(block, message.*field.text, message.documentKind, field.row);
    if (written != StatusOk) return written;
  }
  block.write(tails->block);
  return block.status();
}

// Puts the body between "<html>" and "</html>", a terminating NUL behind both. False without
// memory.
bool WrapInHtmlElement(SizedBytes& body) {
  const std::string_view text = body.text();
  const bool terminated = text.size() != body.length();
  const uint64_t length = body.length() + kHtmlOpen.size() + kHtmlClose.size();
  auto* const block = static_cast<char*>(KernelRealloc(body.data(), length, TARN_HERE));
  if (block == nullptr) return false;

  char* const content = block + kHtmlOpen.size();
  if (!text.empty()) std::memmove(content, block, text.size());
  std::memcpy(block, kHtmlOpen.data(), kHtmlOpen.size());
  std::memcpy(content + text.size(), kHtmlClose.data(), kHtmlClose.size());
  if (terminated) block[length - 1] = '\0';
  body.setData(block);
  body.setLength(length);
  return true;
}

int32_t InsertBlock(SizedBytes& body, uint64_t offset, std::string_view block) {
  const int32_t inserted = body.splice(offset, 0, block);
  return inserted == StatusOk ? StatusOk : StatusOutOfMemory;
}

int32_t InsertIntoHtml(SizedBytes& body, std::string_view block) {
  uint64_t offset = 0;
  if (!FindSplicePoint(body.view(), offset)) return StatusNotSupported;
  if (!OpensWithHtmlElement(body.view())) {
    if (!WrapInHtmlElement(body)) return StatusOutOfMemory;
    offset += kHtmlOpen.size();
  }
  return InsertBlock(body, offset, block);
}

// The block goes behind the mark "+/v" that precedes 7-bit content. One matching byte of the three
// is enough, so that a text that merely starts with a "+" is opened three bytes in; readers of such
// documents know it so. The length that is compared counts a terminating NUL.
int32_t InsertIntoText(SizedBytes& body, std::string_view block) {
  const std::string_view text = body.view();
  const bool marked = text.size() > 3 && (text[0] == '+' || text[1] == '/' || text[2] == 'v');
  return InsertBlock(body, marked ? 3 : 0, block);
}

int32_t InsertIntoBody(EmlMessage& message, BlockWriter& block) {
  if (message.documentKind == DocumentHtml) return InsertIntoHtml(message.body, block.text());
  if (message.documentKind == DocumentText) return InsertIntoText(message.body, block.text());
  SizedBytes rtf;
  block.moveInto(rtf);
  return SpliceEmlRtf(message.body, std::move(rtf));
}

}  // namespace

int32_t AppendEmlHeaderRow(BlockWriter& block, const SizedBytes& field, uint32_t kind,
                           HeaderRow row) {
  if (HasNoText(field)) return StatusOk;
  if (kind == DocumentNone) return StatusTimeFailed;
  const EmlRowOpeners* const openers = FindKind(kEmlRowOpeners, kind);
  const EmlTails* const tails = FindKind(kEmlTails, kind);
  const auto index = static_cast<size_t>(row);
  if (openers == nullptr || tails == nullptr || index >= openers->texts.size()) {
    return StatusNotSupported;
  }
  if (field.data() == nullptr) return StatusNullArgument;

  block.write(openers->texts[index]);
  if (kind == DocumentHtml) {
    const std::string_view text = field.text();
    WriteEscaped(block, text.substr(0, text.find('\0')));
  } else {
    block.writeField(field);
  }
  block.write(tails->row);
  return block.status();
}

int32_t RenderEmlMessage(EmlMessage& message) {
  if (message.documentKind == DocumentNone) return StatusOk;
  if (HasNoText(message.from) && HasNoText(message.to) && HasNoText(message.date) &&
      HasNoText(message.cc)) {
    return StatusOk;
  }

  BlockWriter block;
  const int32_t built = BuildBlock(message, block);
  if (built != StatusOk) return built;
  if (message.body.data() == nullptr && message.body.length() != 0) return StatusNullArgument;
  return InsertIntoBody(message, block);
}

}  // namespace tarn
