#include "render/RtfDocument.h"

#include "Platform/CodePages.h"
#include "render/HeaderBlock.h"
#include "render/RtfSplice.h"

namespace tarn {
namespace {

constexpr std::string_view kRtfRowOpen =
    "\r{\\rtlch\\fcs1 \\ab\\af37 \\ltrch\\fcs0 \\b\\cf0\\insrsid5716485 ";
constexpr std::string_view kRtfRowMiddle = "\\tab }{\\rtlch\\fcs1 \\af37 \\ltrch\\fcs0 \\cf0 ";

// Writes into a render until the first failure; then every write does nothing.
class RowWriter {
 public:
  explicit RowWriter(RtfRender& render) : render_(render) {}

  // RTF as it is.
  void writeRtf(std::string_view rtf) {
    if (status_.ok()) status_ = render_.output.append(rtf);
  }

  // UTF-8 text, to be escaped. A row without all of its text has failed.
  void writeText(std::string_view text) {
    if (!status_.ok() || text.empty()) return;
    RtfTextWriter writer(render_);
    writer.writeUtf8(text);
    status_ = writer.status().ok() ? writer.leftOut() : writer.status();
  }

  // A field without its terminating NUL.
  void writeField(const SizedBytes& field) { writeText(field.text()); }

  Status status() const { return status_; }

 private:
  RtfRender& render_;
  Status status_;
};

}  // namespace

Status AppendRtfHeaderRow(RtfRender& render, const MailMessage* message, const SizedBytes* field,
                          HeaderRow row) {
  if (message == nullptr || field == nullptr) return StatusNullArgument;
  if (field->isEmptyText()) return StatusOk;

  RowWriter writer(render);
  writer.writeRtf(kRtfRowOpen);
  writer.writeText(GetHeaderLabel(row));
  writer.writeRtf(kRtfRowMiddle);
  writer.writeField(*field);
  if (row == HeaderRowFrom && message->fromAddress.hasBlock()) {
    writer.writeRtf(" <");
    writer.writeField(message->fromAddress);
    writer.writeRtf(">");
  }
  writer.writeRtf(kRtfRowTail);
  return writer.status();
}

Status RenderMailRtf(MailMessage& message) {
  // A terminator counts: a font table that never closes reaches over it, and new fonts go before
  // it.
  const std::string_view body = message.body.view();

  RtfRender render;
  render.fonts.setAnsiCodePage(platform::AnsiCodePage());
  if (const Status prepared = render.fonts.prepare(body); !prepared.ok()) return prepared;

  for (const HeaderField<MailMessage>& field : kMailRows) {
    const Status written = AppendRtfHeaderRow(render, &message, &(message.*field.text), field.row);
    if (!written.ok()) return written;
  }
  if (!render.output.hasBlock()) return StatusOk;
  return SpliceRtfBlock(message.body, render.fonts.table(), render.output);
}

}  // namespace tarn
