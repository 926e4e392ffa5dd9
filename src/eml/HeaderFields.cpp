#include "eml/HeaderFields.h"

#include <array>
#include <string_view>

#include "eml/EncodedWords.h"
#include "eml/FieldText.h"
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
bool IsLineEnd(char byte) { return byte == '\r' || byte == '\n'; }

// Where the folded line behind the line end e starts, or null when none follows.
const char* FindContinuation(const char* e, const char* limit) {
  if (limit - e <= 3) return nullptr;
  if (e[1] == ' ') return e + 2;
  if (IsLineEnd(e[1]) && IsBlankOrTab(e[2])) return e + 3;
  return nullptr;
}

int32_t ReadUnfolded(const char* value, const char* limit, SizedBytes& field) {
  FieldText text;
  const char* lineEnd = FindLineEnd(value, limit);
  int32_t status = text.append(value, static_cast<uint64_t>(lineEnd - value));
  while (status == StatusOk) {
    const char* const more = FindContinuation(lineEnd, limit);
    if (more == nullptr) break;
    lineEnd = FindLineEnd(more, limit);
    if (lineEnd == more) break;
    status = text.append(more, static_cast<uint64_t>(lineEnd - more));
  }
  if (status == StatusOk) text.moveTo(field);
  return status;
}

}  // namespace

int32_t ParseEmlHeaders(EmlMessage& message, const char* limit) {
  for (const FieldRow& row : kFields) {
    const char* const line = FindHeaderLine(message.data, limit, row.name);
    if (line == nullptr) continue;
    const char* value = line + row.name.size();
    if (value != limit && *value == ' ') ++value;

    SizedBytes& field = message.*row.field;
    const int32_t status = ReadUnfolded(value, limit, field);
    if (status != StatusOk) return status;
    DecodeEncodedWords(field, &message.convertToUtf8);
  }
  return StatusOk;
}

}  // namespace tarn
