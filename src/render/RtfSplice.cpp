#include "render/RtfSplice.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "Common/ByteSearch.h"
#include "render/BodyRoom.h"

namespace tarn {
namespace {

static_assert(kRtfSeparator.size() == 151);

constexpr uint64_t kSpliceStep = 1024;

// A stretch of the body.
struct Stretch {
  uint64_t start = 0;
  uint64_t length = 0;
};

// What a document consists of, from start to end. What is kept of the body comes in this order.
struct RtfPieces {
  uint64_t head = 0;       // bytes of the body that stay where they are
  std::string_view table;  // empty when the head has the document's own
  Stretch gap;             // between the table and the block
  std::string_view rows;
  Stretch tail;  // from the "\pard" on

  uint64_t gapPlace() const { return head + table.size(); }
  uint64_t rowsPlace() const { return gapPlace() + gap.length; }
  uint64_t tailPlace() const { return rowsPlace() + rows.size() + kRtfSeparator.size(); }
  uint64_t size() const { return tailPlace() + tail.length; }
};

// All pieces but the rows. Without a "\\pard" there is no tail.
Status CutBody(std::string_view body, const RtfFontTable& fonts, RtfPieces& pieces) {
  if (body.empty()) return StatusTimeFailed;
  const size_t paragraph = FindBytes(body, "\\pard");
  if (paragraph == std::string_view::npos) return StatusOk;

  pieces.tail = {paragraph, body.size() - paragraph};
  if (!fonts.changed) {
    pieces.head = paragraph;
  } else if (fonts.tableStart < paragraph) {
    pieces.head = fonts.tableStart;
    pieces.table = fonts.tableText.view();
    if (fonts.tableEnd < paragraph) pieces.gap = {fonts.tableEnd, paragraph - fonts.tableEnd};
  }
  return StatusOk;
}

// Puts the pieces together in the body's own block. The gap is before the tail, and stays so: what
// moves towards the end moves last piece first.
Status AssembleInBody(const RtfPieces& pieces, SizedBytes& body) {
  const auto write = [&pieces](char* text) {
    const auto moveGap = [&] {
      std::memmove(text + pieces.gapPlace(), text + pieces.gap.start, pieces.gap.length);
    };
    if (pieces.tailPlace() < pieces.tail.start) moveGap();
    std::memmove(text + pieces.tailPlace(), text + pieces.tail.start, pieces.tail.length);
    if (pieces.tailPlace() >= pieces.tail.start) moveGap();
    pieces.table.copy(text + pieces.head, pieces.table.size());
    pieces.rows.copy(text + pieces.rowsPlace(), pieces.rows.size());
    kRtfSeparator.copy(text + pieces.rowsPlace() + pieces.rows.size(), kRtfSeparator.size());
    return pieces.size();
  };
  const uint64_t room = std::max(body.length(), pieces.size());
  return RewriteBody(body, room, kSpliceStep, write).ok() ? StatusOk : StatusOutOfMemory;
}

// The same in the block of the rows, which becomes the body's.
Status AssembleInRows(const RtfPieces& pieces, SizedBytes& body, TrackedBuffer<char>& rows) {
  const uint64_t rowsSize = pieces.rows.size();
  char* const text = rows.reserve(pieces.size() + 1);
  if (text == nullptr) return StatusOutOfMemory;
  const std::string_view old = body.view();
  std::memmove(text + pieces.rowsPlace(), text, rowsSize);
  old.copy(text, pieces.head);
  pieces.table.copy(text + pieces.head, pieces.table.size());
  old.copy(text + pieces.gapPlace(), pieces.gap.length, pieces.gap.start);
  kRtfSeparator.copy(text + pieces.rowsPlace() + rowsSize, kRtfSeparator.size());
  old.copy(text + pieces.tailPlace(), pieces.tail.length, pieces.tail.start);
  const uint64_t length = Terminate(text, pieces.size());
  body.adopt(rows.take(), length);
  return StatusOk;
}

}  // namespace

Status SpliceRtfBlock(SizedBytes& body, const RtfFontTable& fonts, std::string_view rows) {
  RtfPieces pieces;
  const Status cut = CutBody(body.view(), fonts, pieces);
  if (!cut.ok() || pieces.tail.length == 0) return cut;
  pieces.rows = rows;
  return AssembleInBody(pieces, body);
}

Status SpliceRtfBlock(SizedBytes& body, const RtfFontTable& fonts, TrackedBuffer<char>& rows) {
  if (rows.length() <= body.length()) return SpliceRtfBlock(body, fonts, rows.view());
  RtfPieces pieces;
  const Status cut = CutBody(body.view(), fonts, pieces);
  if (!cut.ok() || pieces.tail.length == 0) return cut;
  pieces.rows = rows.view();
  return AssembleInRows(pieces, body, rows);
}

Status SpliceEmlRtf(SizedBytes& body, SizedBytes block) {
  return SpliceRtfBlock(body, RtfFontTable(), block.text());
}

}  // namespace tarn
