#include "render/RtfSplice.h"

#include "Common/ByteSearch.h"
#include "render/BlockWriter.h"

namespace tarn {
namespace {

static_assert(kRtfSeparator.size() == 151);

constexpr uint64_t kStep = 1024;

// What a document consists of, from front to back.
struct RtfPieces {
  std::string_view head;
  std::string_view table;  // empty when `head` has the document's own
  std::string_view gap;    // between the table and the block
  std::string_view rows;
  std::string_view tail;  // from the "\pard" on

  uint64_t size() const {
    return head.size() + table.size() + gap.size() + rows.size() + kRtfSeparator.size() +
           tail.size();
  }
};

std::string_view TableText(const RtfFontTable& fonts) {
  return fonts.tableText.data == nullptr
             ? std::string_view()
             : std::string_view(fonts.tableText.data, fonts.tableText.length);
}

RtfPieces CutAt(std::string_view body, uint64_t paragraph, const RtfFontTable& fonts) {
  RtfPieces pieces;
  pieces.tail = body.substr(paragraph);
  if (fonts.changed == 0) {
    pieces.head = body.substr(0, paragraph);
  } else if (fonts.tableStart < paragraph) {
    pieces.head = body.substr(0, fonts.tableStart);
    pieces.table = TableText(fonts);
    if (fonts.tableEnd < paragraph) {
      pieces.gap = body.substr(fonts.tableEnd, paragraph - fonts.tableEnd);
    }
  }
  return pieces;
}

int32_t Assemble(const RtfPieces& pieces, SizedBytes& body) {
  BlockWriter document(kStep);
  document.reserve(pieces.size());
  document.write(pieces.head);
  document.write(pieces.table);
  document.write(pieces.gap);
  document.write(pieces.rows);
  document.write(kRtfSeparator);
  document.write(pieces.tail);
  document.terminate();
  if (document.status() != StatusOk) return StatusOutOfMemory;
  document.moveInto(body);
  return StatusOk;
}

}  // namespace

int32_t SpliceRtfBlock(SizedBytes& body, const RtfFontTable& fonts, std::string_view rows) {
  if (body.length == 0) return StatusTimeFailed;
  if (body.data == nullptr) return StatusNullArgument;

  const std::string_view text = body.bytes();
  const char* const paragraph = FindBytes(text.data(), text.data() + text.size(), "\\pard");
  if (paragraph == nullptr) return StatusOk;
  RtfPieces pieces = CutAt(text, static_cast<uint64_t>(paragraph - text.data()), fonts);
  pieces.rows = rows;
  return Assemble(pieces, body);
}

int32_t SpliceEmlRtf(SizedBytes& body, SizedBytes block) {
  if (block.data == nullptr && block.length != 0) return StatusNullArgument;
  return SpliceRtfBlock(body, RtfFontTable(), block.text());
}

}  // namespace tarn
