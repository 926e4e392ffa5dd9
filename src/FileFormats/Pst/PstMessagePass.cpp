// A message before the wanted one. Of its bodies only that they could be read decides what becomes
// of the walk, and of compressed RTF that it would unpack: so the bodies pass by, and nothing of
// them is kept.
#include <array>
#include <ios>
#include <span>

#include "FileFormats/Pst/PstMessage.h"
#include "FileFormats/Pst/PstProperties.h"
#include "pststore/Errors.h"
#include "pststore/StoreObjects.h"
#include "rtf/PstRtfCheck.h"

namespace tarn {
namespace {

using pststore::hnid_stream_device;

class MessagePass {
 public:
  MessagePass(const pststore::message& source, TarnDocumentKind& kind, StoreReading& reading)
      : source_(source),
        properties_(source.get_property_bag()),
        kind_(kind),
        textLeft_(reading.textLeft) {}

  Status passBodies();

 private:
  Status passBody(MessageProperty id, TarnDocumentKind kind, uint64_t& length);
  Status passHtml(uint64_t& length);
  Status passRtf(uint64_t bodyLength);

  const pststore::message& source_;
  const pststore::property_bag& properties_;
  TarnDocumentKind& kind_;
  uint64_t& textLeft_;
};

// The size of a value, of which nothing has been passed yet.
uint64_t SizeOf(hnid_stream_device& device) {
  const auto size = static_cast<std::streamoff>(device.seek(0, std::ios_base::end));
  device.seek(0, std::ios_base::beg);
  return static_cast<uint64_t>(size);
}

Status MessagePass::passBodies() {
  uint64_t length = 0;
  Status status = passBody(PR_BODY, DocumentText, length);
  length = 0;
  if (status.ok()) status = passHtml(length);
  if (status.ok()) status = passRtf(length);
  return status;
}

Status MessagePass::passBody(MessageProperty id, TarnDocumentKind kind, uint64_t& length) {
  if (!properties_.prop_exists(id)) return StatusOk;
  kind_ = kind;
  hnid_stream_device device = properties_.open_prop_stream(id);
  length = SizeOf(device);
  if (!TakeFrom(textLeft_, length)) return StatusOutOfMemory;
  for (uint64_t left = length; left != 0;) {
    const size_t done = device.skip();
    if (done == 0) throw pststore::database_corrupt("a stream is shorter than its size");
    left -= done;
  }
  return StatusOk;
}

// A table of attachments that cannot be read is damage of any HTML message.
Status MessagePass::passHtml(uint64_t& length) {
  if (!properties_.prop_exists(PR_HTML)) return StatusOk;
  const Status status = passBody(PR_HTML, DocumentHtml, length);
  if (status.ok()) pststore::get_attachment_count(source_);
  return status;
}

Status MessagePass::passRtf(uint64_t bodyLength) {
  if (!properties_.prop_exists(PR_RTF_COMPRESSED)) return StatusOk;
  kind_ = DocumentRtf;
  hnid_stream_device device = properties_.open_prop_stream(PR_RTF_COMPRESSED);
  const uint64_t length = SizeOf(device);
  if (!TakeFrom(textLeft_, length)) return StatusOutOfMemory;
  if (length < kCompressedRtfHeaderSize) return StatusNotSupported;

  // Damage of the store is told before damage of the RTF: all of it is read.
  PstRtfCheck check(length, bodyLength);
  std::array<unsigned char, 4 * hnid_stream_device::pass_step> piece;
  size_t filled = 0;
  for (uint64_t left = length; left != 0;) {
    const auto room = std::span(piece).subspan(filled, hnid_stream_device::pass_step);
    const size_t done = device.pass(room);
    if (done == 0) return StatusNotSupported;
    filled += done;
    left -= done;
    if (left != 0 && filled + hnid_stream_device::pass_step <= piece.size()) continue;
    check.take(std::span(piece).first(filled));
    filled = 0;
  }
  if (const Status checked = check.status(); !checked.ok()) return checked;
  return TakeFrom(textLeft_, check.bodyLength()) ? StatusOk : StatusOutOfMemory;
}

}  // namespace

Status PassPstMessage(const pststore::message& source, TarnDocumentKind& kind,
                      StoreReading& reading) {
  pststore::wstring subject;
  const Status status = ReadSubject(source.get_property_bag(), reading.textLeft, subject);
  if (!status.ok()) return status;
  if (IsWithoutNumber(subject)) return StatusDone;
  if (reading.request != nullptr) return StatusOk;
  return MessagePass(source, kind, reading).passBodies();
}

}  // namespace tarn
