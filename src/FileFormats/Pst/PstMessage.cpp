#include "FileFormats/Pst/PstMessage.h"

#include "Common/ApiUtils.h"
#include "FileFormats/Pst/PstAttachments.h"
#include "FileFormats/Pst/PstInlineImages.h"
#include "FileFormats/Pst/PstProperties.h"
#include "FileFormats/Pst/PstStreams.h"
#include "pststore/StoreObjects.h"
#include "render/HeaderLabels.h"
#include "rtf/CompressedRtf.h"

namespace tarn {
namespace {

struct StringField {
  MessageProperty property;
  SizedBytes MailMessage::*field;
};

constexpr StringField kStringFields[] = {
    {PR_SENDER_NAME, &MailMessage::from},
    {PR_DISPLAY_TO, &MailMessage::to},
    {PR_DISPLAY_CC, &MailMessage::cc},
    {PR_DISPLAY_BCC, &MailMessage::bcc},
};

// The text as UTF-8 in the field. An empty text frees the field; without memory, or when the
// conversion fails, the field keeps its length.
void StoreField(SizedBytes& field, const pststore::wstring& text) {
  if (text.empty()) {
    field.release();
    return;
  }
  const uint64_t room = 4 * text.size();
  field.refill(room, [&](char* block) {
    const uint64_t written = ConvertToUtf8(text, {block, room});
    return written != 0 ? written : field.length();
  });
}

Status ReadHeaderFields(const pststore::property_bag& properties, const pststore::wstring& subject,
                        uint64_t& textLeft, MailMessage& record) {
  StoreField(record.subject, subject);
  pststore::wstring text;
  for (const StringField& row : kStringFields) {
    if (!properties.prop_exists(row.property)) continue;
    const Status status = ReadText(properties, row.property, textLeft, text);
    if (!status.ok()) return status;
    StoreField(record.*row.field, text);
  }
  if (properties.prop_exists(PR_CLIENT_SUBMIT_TIME) &&
      properties.size(PR_CLIENT_SUBMIT_TIME) == 8) {
    const auto time = static_cast<int64_t>(properties.get_value_8(PR_CLIENT_SUBMIT_TIME));
    FormatFileTime(time, record.sent).ignore();
  }
  if (properties.prop_exists(PR_IMPORTANCE)) {
    const auto importance = static_cast<int32_t>(properties.get_value_4(PR_IMPORTANCE));
    ImportanceText(importance, record.importance).ignore();
  }
  return StatusOk;
}

// Reads one message, step by step. What the store throws passes through.
class MessageRead {
 public:
  MessageRead(const pststore::message& source, TarnDocumentKind& kind, MessageList& list,
              StoreReading& reading)
      : source_(source),
        properties_(source.get_property_bag()),
        kind_(kind),
        list_(list),
        record_(*list.records),
        reading_(reading) {}

  Status run();

 private:
  Status readPlainBody();
  Status readHtmlBody();
  Status readRtfBody();

  const pststore::message& source_;
  const pststore::property_bag& properties_;
  TarnDocumentKind& kind_;
  MessageList& list_;
  MailMessage& record_;
  StoreReading& reading_;
};

Status MessageRead::run() {
  pststore::wstring subject;
  Status status = ReadSubject(properties_, reading_.textLeft, subject);
  if (!status.ok()) return status;
  if (IsWithoutNumber(subject)) return StatusDone;

  record_.body.clear();
  record_.text.clear();
  if (reading_.request != nullptr) {
    return EnumeratePstAttachments(source_, *reading_.request, reading_.fileSize);
  }
  status = ReadHeaderFields(properties_, subject, reading_.textLeft, record_);
  if (status.ok()) status = readPlainBody();
  if (status.ok()) status = readHtmlBody();
  if (status.ok()) status = readRtfBody();
  return status;
}

Status MessageRead::readPlainBody() {
  if (!properties_.prop_exists(PR_BODY)) return StatusOk;
  kind_ = DocumentText;
  pststore::prop_stream stream(OpenOnce(properties_, PR_BODY));
  const uint64_t size = SizeByEnd(stream);
  if (!TakeFrom(reading_.textLeft, size)) return StatusOutOfMemory;
  KernelBlock<char> block = AllocateBlock<char>(size, TARN_HERE);
  if (!block) return StatusOutOfMemory;
  ReadFromStart(stream, block.get(), size);
  record_.text.adopt(std::move(block), size);
  return StatusOk;
}

Status MessageRead::readHtmlBody() {
  if (!properties_.prop_exists(PR_HTML)) return StatusOk;
  kind_ = DocumentHtml;
  pststore::prop_stream stream(OpenOnce(properties_, PR_HTML));
  const uint64_t size = SizeByEnd(stream);
  if (!TakeFrom(reading_.textLeft, size)) return StatusOutOfMemory;
  SizedBytes& body = record_.body;
  const auto read = [&](char* block) {
    ReadFromStart(stream, block, size);
    return size;
  };
  if (!body.refill(size, read)) return StatusOutOfMemory;

  const uint32_t attachments = pststore::get_attachment_count(source_);
  if (attachments == 0) return StatusOk;
  return InlinePstImages(source_, attachments, body, reading_);
}

// The RTF takes the place of an HTML body.
Status MessageRead::readRtfBody() {
  if (!properties_.prop_exists(PR_RTF_COMPRESSED)) return StatusOk;
  kind_ = DocumentRtf;
  pststore::prop_stream stream(OpenOnce(properties_, PR_RTF_COMPRESSED));
  if (!TakeFrom(reading_.textLeft, SizeByEnd(stream))) return StatusOutOfMemory;
  const Status status = DecodePstCompressedRtf(stream, list_, 0);
  if (!status.ok()) return status;
  return TakeFrom(reading_.textLeft, record_.body.length()) ? StatusOk : StatusOutOfMemory;
}

}  // namespace

Status ReadPstMessage(const pststore::message& source, TarnDocumentKind& kind, MessageList& list,
                      StoreReading& reading) {
  return MessageRead(source, kind, list, reading).run();
}

}  // namespace tarn
