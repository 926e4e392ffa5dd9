#include "eml/HeaderFields.h"

#include <array>

#include "Common/ByteSearch.h"
#include "Common/TextWriter.h"
#include "eml/EncodedWords.h"
#include "eml/HeaderSearch.h"

namespace tarn {
namespace {

struct FieldRow {
  std::string_view name;
  SizedBytes EmlMessage::*field;
};

constexpr std::array<FieldRow, 7> kFields = {{{"From:", &EmlMessage::from},
                                              {"To:", &EmlMessage::to},
                                              {"Subject:", &EmlMessage::subject},
                                              {"Date:", &EmlMessage::date},
                                              {"CC:", &EmlMessage::cc},
                                              {"BCC:", &EmlMessage::bcc},
                                              {"Importance:", &EmlMessage::importance}}};

bool IsBlankOrTab(char byte) { return byte == ' ' || byte == '\t'; }

// Where the folded line after the line end e starts, or npos when none follows.
size_t FindContinuation(std::string_view header, size_t e) {
  if (header.size() - e <= 3) return npos;
  if (header[e + 1] == ' ') return e + 2;
  if (IsLineEnd(header[e + 1]) && IsBlankOrTab(header[e + 2])) return e + 3;
  return npos;
}

Status ReadUnfolded(std::string_view header, size_t value, SizedBytes& field) {
  TextWriter text(256, TextWriter::Budget::Ignored);
  size_t lineEnd = FindLineEnd(header, value);
  text.append(header.substr(value, lineEnd - value));
  for (;;) {
    const size_t more = FindContinuation(header, lineEnd);
    if (more == npos) break;
    lineEnd = FindLineEnd(header, more);
    if (lineEnd == more) break;
    text.append(header.substr(more, lineEnd - more));
  }
  if (text.status().ok()) text.moveInto(field);
  return text.status();
}

}  // namespace

Status ParseEmlHeaders(EmlMessage& message, size_t limit) {
  const std::string_view header = message.file().substr(0, limit);
  for (const FieldRow& row : kFields) {
    const size_t line = FindHeaderLine(header, row.name);
    if (line == npos) continue;
    size_t value = line + row.name.size();
    if (header.substr(value).starts_with(' ')) ++value;

    SizedBytes& field = message.*row.field;
    if (const Status read = ReadUnfolded(header, value, field); !read.ok()) return read;
    DecodeEncodedWords(field, &message.convertToUtf8).ignore();
  }
  return StatusOk;
}

}  // namespace tarn
