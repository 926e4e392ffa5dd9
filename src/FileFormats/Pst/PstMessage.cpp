#include "FileFormats/Pst/PstMessage.h"

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
  const uint64_t room = 4 * static_cast<uint64_t>(text.size());
  if (field.data() == nullptr || field.length() < room) {
    void* const block = KernelRealloc(field.data(), room, TARN_HERE);
    if (block == nullptr) return;
    field.setData(static_cast<char*>(block));
  }
  const int64_t written = KernelWideToUtf8(text.data(), static_cast<int64_t>(text.size()),
                                           field.data(), static_cast<int64_t>(room));
  if (written > 0) field.setLength(static_cast<uint64_t>(written));
}

int32_t ReadHeaderFields(const pststore::property_bag& properties, const pststore::wstring& subject,
                         uint64_t& textLeft, MailMessage& record) {
  StoreField(record.subject, subject);
  pststore::wstring text;
  for (const StringField& row : kStringFields) {
    if (!properties.prop_exists(row.property)) continue;
    const int32_t status = ReadText(properties, row.property, textLeft, text);
    if (status != StatusOk) return status;
    StoreField(record.*row.field, text);
  }
  if (properties.prop_exists(PR_CLIENT_SUBMIT_TIME) &&
      properties.size(PR_CLIENT_SUBMIT_TIME) == 8) {
    FormatFileTime(static_cast<int64_t>(properties.get_value_8(PR_CLIENT_SUBMIT_TIME)),
                   record.sent);
  }
  if (properties.prop_exists(PR_IMPORTANCE)) {
    ImportanceText(static_cast<int32_t>(properties.get_value_4(PR_IMPORTANCE)), record.importance);
  }
  return StatusOk;
}

// Reads one message, step by step. What the store throws passes through.
class MessageRead {
 public:
  MessageRead(const pststore::message& source, uint32_t& kind, MessageList& list,
              StoreReading& reading)
      : source_(source),
        properties_(source.get_property_bag()),
        kind_(kind),
        list_(list),
        record_(*list.records),
        reading_(reading) {}

  int32_t run();

 private:
  int32_t readPlainBody();
  int32_t readHtmlBody();
  int32_t readRtfBody();

  const pststore::message& source_;
  const pststore::property_bag& properties_;
  uint32_t& kind_;
  MessageList& list_;
  MailMessage& record_;
  StoreReading& reading_;
};

int32_t MessageRead::run() {
  pststore::wstring subject;
  int32_t status = ReadSubject(properties_, reading_.textLeft, subject);
  if (status != StatusOk) return status;
  if (IsWithoutNumber(subject)) return StatusDone;

  record_.body.setLength(0);
  record_.text.setLength(0);
  if (reading_.request != nullptr) {
    return EnumeratePstAttachments(source_, *reading_.request, reading_.fileSize);
  }
  status = ReadHeaderFields(properties_, subject, reading_.textLeft, record_);
  if (status == StatusOk) status = readPlainBody();
  if (status == StatusOk) status = readHtmlBody();
  if (status == StatusOk) status = readRtfBody();
  return status;
}

int32_t MessageRead::readPlainBody() {
  if (!properties_.prop_exists(PR_BODY)) return StatusOk;
  kind_ = DocumentText;
  pststore::prop_stream stream(OpenOnce(properties_, PR_BODY));
  const uint64_t size = SizeByEnd(stream);
  if (!TakeFrom(reading_.textLeft, size)) return StatusOutOfMemory;
  KernelBlock<char> block = AllocateBlock<char>(size, TARN_HERE);
  if (!block) return StatusOutOfMemory;
  ReadFromStart(stream, block.get(), size);
  record_.text.release();
  record_.text.setData(block.take());
  record_.text.setLength(size);
  return StatusOk;
}

int32_t MessageRead::readHtmlBody() {
  if (!properties_.prop_exists(PR_HTML)) return StatusOk;
  kind_ = DocumentHtml;
  pststore::prop_stream stream(OpenOnce(properties_, PR_HTML));
  const uint64_t size = SizeByEnd(stream);
  if (!TakeFrom(reading_.textLeft, size)) return StatusOutOfMemory;
  SizedBytes& body = record_.body;
  if (body.data() == nullptr || body.length() < size) {
    void* const block = KernelRealloc(body.data(), size, TARN_HERE);
    if (block == nullptr) return StatusOutOfMemory;
    body.setData(static_cast<char*>(block));
  }
  ReadFromStart(stream, body.data(), size);
  body.setLength(size);

  const uint32_t attachments = pststore::get_attachment_count(source_);
  if (attachments == 0) return StatusOk;
  return InlinePstImages(source_, attachments, body, reading_);
}

// The RTF takes the place of an HTML body.
int32_t MessageRead::readRtfBody() {
  if (!properties_.prop_exists(PR_RTF_COMPRESSED)) return StatusOk;
  kind_ = DocumentRtf;
  pststore::prop_stream stream(OpenOnce(properties_, PR_RTF_COMPRESSED));
  if (!TakeFrom(reading_.textLeft, SizeByEnd(stream))) return StatusOutOfMemory;
  const int32_t status = DecodePstCompressedRtf(stream, list_, 0);
  if (status != StatusOk) return status;
  return TakeFrom(reading_.textLeft, record_.body.length()) ? StatusOk : StatusOutOfMemory;
}

}  // namespace

int32_t ReadPstMessage(const pststore::message& source, uint32_t& kind, MessageList& list,
                       StoreReading& reading) {
  return MessageRead(source, kind, list, reading).run();
}

}  // namespace tarn
