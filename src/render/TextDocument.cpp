#include "render/TextDocument.h"

#include "Common/TextWriter.h"
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

// Puts one row before the text.
Status PrependRow(MailMessage& message, const HeaderField<MailMessage>& field) {
  const std::string_view value = (message.*field.text).text();
  if (value.empty() || !message.text.hasBlock()) return StatusOk;

  const std::string_view label = GetHeaderLabel(field.row);
  TextWriter document(kStep);
  document.reserve(message.text.length() + 2 * label.size() + 3);
  document.write(label);
  document.write("\t");
  document.write(value);
  if (field.row == HeaderRowFrom && message.fromAddress.hasBlock()) {
    document.write(" <");
    document.write(message.fromAddress.text());
    document.write(">");
  }
  document.write(kLineEnd);
  if (EndsBlock(message, field.row)) document.write(kLineEnd);
  document.write(message.text.view());
  document.terminate();
  if (document.status().ok()) document.moveInto(message.text);
  return document.status();
}

}  // namespace

Status RenderMailText(MailMessage& message) {
  for (auto field = kMailRows.rbegin(); field != kMailRows.rend(); ++field) {
    if (const Status written = PrependRow(message, *field); !written.ok()) return written;
  }
  return StatusOk;
}

}  // namespace tarn
