#include "FileFormats/Pst/PstMessage.h"

#include <stdexcept>

#include "FileFormats/Pst/PstAttachments.h"
#include "FileFormats/Pst/PstInlineImages.h"
#include "FileFormats/Pst/PstStreams.h"
#include "pststore/StoreObjects.h"
#include "render/HeaderLabels.h"
#include "rtf/CompressedRtf.h"

namespace tarn {
namespace {

// Properties of a message, by their published names.
enum MessageProperty : pststore::ushort {
  PR_IMPORTANCE = 0x0017,
  PR_SUBJECT = 0x0037,
  PR_CLIENT_SUBMIT_TIME = 0x0039,
  PR_SENDER_NAME = 0x0C1A,
  PR_DISPLAY_BCC = 0x0E02,
  PR_DISPLAY_CC = 0x0E03,
  PR_DISPLAY_TO = 0x0E04,
  PR_BODY = 0x1000,
  PR_RTF_COMPRESSED = 0x1009,
  PR_HTML = 0x1013,
};

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

// A text property that exists. 1; -1, and nothing is read, for one of more than `textLeft` bytes.
int32_t ReadText(const pststore::property_bag& properties, pststore::ushort id, uint64_t& textLeft,
                 pststore::wstring& text) {
  if (!TakeFrom(textLeft, TextBytes(properties, id))) return StatusOutOfMemory;
  text = properties.read_prop<pststore::wstring>(id);
  return StatusOk;
}

// A subject may start with a marker, the character 1 and one that tells the length of a prefix.
int32_t ReadSubject(const pststore::property_bag& properties, uint64_t& textLeft,
                    pststore::wstring& subject) {
  if (!properties.prop_exists(PR_SUBJECT)) {
    subject = u"No Subject";
    return StatusOk;
  }
  const int32_t status = ReadText(properties, PR_SUBJECT, textLeft, subject);
  if (status == StatusOk && !subject.empty() && subject.front() == u'\1') {
    if (subject.size() < 2) throw std::out_of_range("subject marker without its second character");
    subject.erase(0, 2);
  }
  return status;
}

// The text as UTF-8 in the field. An empty text frees the field; without memory, or when the
// conversion fails, the field keeps its length.
void StoreField(SizedBytes& field, const pststore::wstring& text) {
  if (text.empty()) {
    field.release();
    return;
  }
  const uint64_t room = 4 * static_cast<uint64_t>(text.size());
  if (field.data == nullptr || field.length < room) {
    void* const block = KernelRealloc(field.data, room, TARN_HERE);
    if (block == nullptr) return;
    field.data = static_cast<char*>(block);
  }
  const int64_t written = KernelWideToUtf8(text.data(), static_cast<int64_t>(text.size()),
                                           field.data, static_cast<int64_t>(room));
  if (written > 0) field.length = static_cast<uint64_t>(written);
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
  MessageRead(const pststore::message& source, uint32_t& kind, MessageList& list, int32_t index,
              StoreReading& reading)
      : source_(source),
        properties_(source.get_property_bag()),
        kind_(kind),
        list_(list),
        index_(index),
        record_(list.records[index]),
        reading_(reading) {}

  int32_t run(bool selected);

 private:
  int32_t readPlainBody();
  int32_t readHtmlBody(bool selected);
  int32_t readRtfBody();

  const pststore::message& source_;
  const pststore::property_bag& properties_;
  uint32_t& kind_;
  MessageList& list_;
  const int32_t index_;
  MailMessage& record_;
  StoreReading& reading_;
};

int32_t MessageRead::run(bool selected) {
  pststore::wstring subject;
  int32_t status = ReadSubject(properties_, reading_.textLeft, subject);
  if (status != StatusOk) return status;
  if (subject == u"LocalFreebusy") return StatusDone;

  record_.body.length = 0;
  record_.text.length = 0;
  if (reading_.request != nullptr) {
    if (!selected) return StatusOk;
    return EnumeratePstAttachments(source_, *reading_.request, reading_.fileSize);
  }
  if (selected) status = ReadHeaderFields(properties_, subject, reading_.textLeft, record_);
  if (status == StatusOk) status = readPlainBody();
  if (status == StatusOk) status = readHtmlBody(selected);
  if (status == StatusOk) status = readRtfBody();
  return status;
}

int32_t MessageRead::readPlainBody() {
  if (!properties_.prop_exists(PR_BODY)) return StatusOk;
  kind_ = DocumentText;
  pststore::prop_stream stream(properties_.open_prop_stream(PR_BODY));
  const uint64_t size = SizeByEnd(stream);
  if (!TakeFrom(reading_.textLeft, size)) return StatusOutOfMemory;
  KernelBlock<char> block = AllocateBlock<char>(size, TARN_HERE);
  if (!block) return StatusOutOfMemory;
  ReadFromStart(stream, block.get(), size);
  record_.text.release();
  record_.text.data = block.take();
  record_.text.length = size;
  return StatusOk;
}

int32_t MessageRead::readHtmlBody(bool selected) {
  if (!properties_.prop_exists(PR_HTML)) return StatusOk;
  kind_ = DocumentHtml;
  pststore::prop_stream stream(properties_.open_prop_stream(PR_HTML));
  const uint64_t size = SizeByEnd(stream);
  if (!TakeFrom(reading_.textLeft, size)) return StatusOutOfMemory;
  SizedBytes& body = record_.body;
  if (body.data == nullptr || body.length < size) {
    void* const block = KernelRealloc(body.data, size, TARN_HERE);
    if (block == nullptr) return StatusOutOfMemory;
    body.data = static_cast<char*>(block);
  }
  ReadFromStart(stream, body.data, size);
  body.length = size;

  const uint32_t attachments = pststore::get_attachment_count(source_);
  if (attachments == 0 || !selected) return StatusOk;
  return InlinePstImages(source_, attachments, body, reading_);
}

// The RTF takes the place of an HTML body.
int32_t MessageRead::readRtfBody() {
  if (!properties_.prop_exists(PR_RTF_COMPRESSED)) return StatusOk;
  kind_ = DocumentRtf;
  pststore::prop_stream stream(properties_.open_prop_stream(PR_RTF_COMPRESSED));
  if (!TakeFrom(reading_.textLeft, SizeByEnd(stream))) return StatusOutOfMemory;
  const int32_t status = DecodePstCompressedRtf(stream, list_, index_);
  if (status != StatusOk) return status;
  return TakeFrom(reading_.textLeft, record_.body.length) ? StatusOk : StatusOutOfMemory;
}

}  // namespace

int32_t ReadPstMessage(const pststore::message& source, uint32_t& kind, bool selected,
                       MessageList& list, int32_t index, StoreReading& reading) {
  return MessageRead(source, kind, list, index, reading).run(selected);
}

}  // namespace tarn
