#include "render/RtfSplice.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "Common/ByteSearch.h"
#include "render/BodyRoom.h"

namespace tarn {
namespace {

static_assert(kRtfSeparator.size() == 151);

constexpr uint64_t kStep = 1024;

// A stretch of the body.
struct Stretch {
  uint64_t start = 0;
  uint64_t length = 0;
};

// What a document consists of, from front to back. What is kept of the body comes in this order.
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

std::string_view TableText(const RtfFontTable& fonts) {
  return fonts.tableText.data() == nullptr
             ? std::string_view()
             : std::string_view(fonts.tableText.data(), fonts.tableText.length());
}

// All pieces but the rows. Without a "\\pard" there is no tail.
int32_t CutBody(const SizedBytes& body, const RtfFontTable& fonts, RtfPieces& pieces) {
  if (body.length() == 0) return StatusTimeFailed;
  if (body.data() == nullptr) return StatusNullArgument;
  const char* const end = body.data() + body.length();
  const char* const found = FindBytes(body.data(), end, "\\pard");
  if (found == nullptr) return StatusOk;

  const auto paragraph = static_cast<uint64_t>(found - body.data());
  pieces.tail = {paragraph, body.length() - paragraph};
  if (fonts.changed == 0) {
    pieces.head = paragraph;
  } else if (fonts.tableStart < paragraph) {
    pieces.head = fonts.tableStart;
    pieces.table = TableText(fonts);
    if (fonts.tableEnd < paragraph) pieces.gap = {fonts.tableEnd, paragraph - fonts.tableEnd};
  }
  return StatusOk;
}

// Puts the pieces together in the body's own block. The gap lies before the tail, and does so
// afterwards: what moves towards the end moves last piece first.
int32_t AssembleInBody(const RtfPieces& pieces, SizedBytes& body) {
  const uint64_t room = std::max(body.length(), pieces.size());
  if (MakeRoomInBody(body, room, kStep) != StatusOk) return StatusOutOfMemory;
  char* const text = body.data();
  const auto moveGap = [&] {
    std::memmove(text + pieces.gapPlace(), text + pieces.gap.start, pieces.gap.length);
  };
  if (pieces.tailPlace() < pieces.tail.start) moveGap();
  std::memmove(text + pieces.tailPlace(), text + pieces.tail.start, pieces.tail.length);
  if (pieces.tailPlace() >= pieces.tail.start) moveGap();
  pieces.table.copy(text + pieces.head, pieces.table.size());
  pieces.rows.copy(text + pieces.rowsPlace(), pieces.rows.size());
  kRtfSeparator.copy(text + pieces.rowsPlace() + pieces.rows.size(), kRtfSeparator.size());
  body.setLength(pieces.size());
  TerminateBody(body);
  return StatusOk;
}

// The same in the block of the rows, which becomes the body's.
int32_t AssembleInRows(const RtfPieces& pieces, SizedBytes& body, TrackedBuffer<char>& rows) {
  const uint64_t rowsSize = pieces.rows.size();
  if (rows.reserve(pieces.size() + 1) == nullptr) return StatusOutOfMemory;
  const std::string_view old = body.view();
  char* const text = rows.data();
  std::memmove(text + pieces.rowsPlace(), text, rowsSize);
  old.copy(text, pieces.head);
  pieces.table.copy(text + pieces.head, pieces.table.size());
  old.copy(text + pieces.gapPlace(), pieces.gap.length, pieces.gap.start);
  kRtfSeparator.copy(text + pieces.rowsPlace() + rowsSize, kRtfSeparator.size());
  old.copy(text + pieces.tailPlace(), pieces.tail.length, pieces.tail.start);
  body.adopt(rows.take(), pieces.size());
  TerminateBody(body);
  return StatusOk;
}

}  // namespace

int32_t SpliceRtfBlock(SizedBytes& body, const RtfFontTable& fonts, std::string_view rows) {
  RtfPieces pieces;
  const int32_t cut = CutBody(body, fonts, pieces);
  if (cut != StatusOk || pieces.tail.length == 0) return cut;
  pieces.rows = rows;
  return AssembleInBody(pieces, body);
}

int32_t SpliceRtfBlock(SizedBytes& body, const RtfFontTable& fonts, TrackedBuffer<char>& rows) {
  const std::string_view text =
      rows.data() == nullptr ? std::string_view() : std::string_view(rows.data(), rows.length());
  if (text.size() <= body.length()) return SpliceRtfBlock(body, fonts, text);
  RtfPieces pieces;
  const int32_t cut = CutBody(body, fonts, pieces);
  if (cut != StatusOk || pieces.tail.length == 0) return cut;
  pieces.rows = text;
  return AssembleInRows(pieces, body, rows);
}

int32_t SpliceEmlRtf(SizedBytes& body, SizedBytes block) {
  if (block.data() == nullptr && block.length() != 0) return StatusNullArgument;
  return SpliceRtfBlock(body, RtfFontTable(), block.text());
}

}  // namespace tarn
