#include "render/TextDocument.h"

#include "render/BlockWriter.h"
#include "render/HeaderBlock.h"

namespace tarn {
namespace {

constexpr uint64_t kStep = 32;
constexpr std::string_view kLineEnd = "\r\n";

// An importance of a single NUL has no row and is still a length, so that no empty line follows the
// subject: the line belongs to the row of importance.
bool EndsBlock(const MailMessage& message, HeaderRow row) {
  return row == HeaderRowImportance ||
         (row == HeaderRowSubject && message.importance.length() == 0);
}

// Puts one row in front of the text.
int32_t PrependRow(MailMessage& message, const HeaderField<MailMessage>& field) {
  const SizedBytes& value = message.*field.text;
  if (HasNoText(value) || message.text.data() == nullptr) return StatusOk;

  const std::string_view label = GetHeaderLabel(field.row);
  BlockWriter document(kStep);
  document.reserve(message.text.length() + 2 * label.size() + 3);
  document.write(label);
  document.write("\t");
  document.writeField(value);
  if (field.row == HeaderRowFrom && message.fromAddress.data() != nullptr) {
    document.write(" <");
    document.writeField(message.fromAddress);
    document.write(">");
  }
  document.write(kLineEnd);
  if (EndsBlock(message, field.row)) document.write(kLineEnd);
  document.writeWhole(message.text);
  document.terminate();
  if (document.status() == StatusOk) document.moveInto(message.text);
  return document.status();
}

}  // namespace

int32_t RenderMailText(MailMessage& message) {
  for (auto field = kMailRows.rbegin(); field != kMailRows.rend(); ++field) {
    const int32_t written = PrependRow(message, *field);
    if (written != StatusOk) return written;
  }
  return StatusOk;
}

}  // namespace tarn
