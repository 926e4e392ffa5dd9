#include "msg/MsgReader.h"

#include <algorithm>
#include <new>
#include <optional>
#include <span>
#include <string_view>

#include "Common/ApiUtils.h"
#include "msg/MsgAttachments.h"
#include "msg/MsgStreams.h"
#include "msg/PropertyStreams.h"
#include "render/HeaderLabels.h"
#include "rtf/CompressedRtf.h"
#include "rtf/ScrubHtmlBody.h"

namespace tarn {
namespace {

constexpr uint64_t kMessageRecordsStart = 32;  // in the properties of a message of its own
constexpr uint16_t kSubmitTime = 0x0039;
constexpr uint16_t kImportance = 0x0017;

struct TextField {
  std::string_view stream;
  SizedBytes MailMessage::*field;
};

constexpr TextField kSenderFields[] = {
    {msg_stream::kSubject, &MailMessage::subject},
    {msg_stream::kSenderName, &MailMessage::from},
    {msg_stream::kSenderSmtpAddress, &MailMessage::fromAddress},
};
constexpr TextField kRecipientFields[] = {
    {msg_stream::kOriginalAuthor, &MailMessage::originalAuthor},
    {msg_stream::kDisplayTo, &MailMessage::to},
    {msg_stream::kDisplayCc, &MailMessage::cc},
    {msg_stream::kDisplayBcc, &MailMessage::bcc},
};

// Reads one message, step by step.
class MessageReader {
 public:
  MessageReader(MailMessage& message, PstFilterData& data, const CompoundStorage& storage)
      : message_(message), data_(data), storage_(storage) {}

  Status run();

 private:
  Status readBodies();
  Status readTexts(std::span<const TextField> fields);
  Status readSender();
  Status readFixedProperties();

  MailMessage& message_;
  PstFilterData& data_;
  const CompoundStorage& storage_;
};

Status MessageReader::run() {
  Status status = readBodies();
  if (status.ok()) status = readSender();
  if (status.ok()) status = readTexts(kRecipientFields);
  if (status.ok()) status = readFixedProperties();
  if (!status.ok()) return status;

  if (!data_.inlineFiles.hasBlock()) {
    const Status placed = InlineMsgImages(message_, data_, storage_);
    if (message_.inlineStatus.ok()) message_.inlineStatus = placed;
  }
  message_.attachmentCount = data_.attachmentCount;
  return StatusOk;
}

Status MessageReader::readBodies() {
  Status status = ReadMsgCompressedBody(message_, storage_);
  if (status == kNoStream) status = ReadMsgTextProperty(storage_, msg_stream::kHtml, message_.body);
  if (status.ok()) status = ReadMsgTextProperty(storage_, msg_stream::kText, message_.text);
  if (!status.ok()) return status;
  return message_.text.hasBlock() || message_.body.hasBlock() ? StatusOk : StatusNotSupported;
}

Status MessageReader::readTexts(std::span<const TextField> fields) {
  for (const TextField& row : fields) {
    const Status status = ReadMsgTextProperty(storage_, row.stream, message_.*row.field);
    if (!status.ok()) return status;
  }
  return StatusOk;
}

// An address that is none of internet mail is dropped, whichever of the two it is.
Status MessageReader::readSender() {
  Status status = readTexts(kSenderFields);
  if (!status.ok()) return status;
  SizedBytes& address = message_.fromAddress;
  if (address.isEmptyText()) {
    status = ReadMsgTextProperty(storage_, msg_stream::kRepresentedAddress, address);
    if (!status.ok()) return status;
  }
  const std::string_view text = address.text();
  if (!text.empty() && text.find('@') == std::string_view::npos) address.release();
  return StatusOk;
}

Status MessageReader::readFixedProperties() {
  SizedBytes properties;
  const Status read = ReadMsgStream(storage_, msg_stream::kProperties, properties);
  if (read == kNoStream) return StatusOk;
  if (!read.ok()) return read;
  const auto find = [&](uint16_t type, uint16_t id) {
    return FindPropertyRecord(properties.view(), kMessageRecordsStart, type, id);
  };
  if (const std::optional<uint64_t> time = find(kPropertyTime, kSubmitTime)) {
    const Status status = FormatFileTime(static_cast<int64_t>(*time), message_.sent);
    if (!status.ok()) return status;
  }
  if (const std::optional<uint64_t> level = find(kPropertyInteger, kImportance)) {
    const auto importance = static_cast<int32_t>(static_cast<uint32_t>(*level));
    const Status status = ImportanceText(importance, message_.importance);
    if (!status.ok()) return status;
  }
  return StatusOk;
}

bool IsCompressedRtf(std::string_view bytes) {
  const std::string_view magic = bytes.substr(std::min<size_t>(8, bytes.size()), 4);
  return magic == "LZFu" || magic == "MELA";
}

}  // namespace

Status ReadMsgCompressedBody(MailMessage& message, const CompoundStorage& storage) try {
  std::optional<CompoundStream> stream = storage.file->open(msg_stream::kCompressedRtf);
  if (!stream) return kNoStream;
  SizedBytes packed;
  const Status read = ReadWholeStream(&*stream, packed);
  if (!read.ok()) return read;
  if (!IsCompressedRtf(packed.view())) {
    message.compressedRtf = packed.take();
    return StatusOk;
  }

  const uint64_t length = packed.length();
  const Status decoded = DecodeCompressedRtf(packed.take().take(), message, length);
  if (!decoded.ok()) return decoded;
  if (message.body.view().starts_with("{\\rtf")) return StatusOk;
  return ScrubHtmlBody(message.body.data(), message.body.length());
} catch (const std::bad_alloc&) {
  return StatusOutOfMemory;
}

Status ReadMsgFile(MailMessage& message, PstFilterData& data, const char16_t* path,
                   const AttachmentRequest* request) {
  const FileGuard file(FileGuard::Read, KernelFileOpen(path, KERNEL_OPEN_READ, KERNEL_OPEN_MODE));
  if (!file.isOpen()) return StatusMsgOpenFailed;
  try {
    CompoundFile opened = CompoundFile::open(file.handle());
    if (opened.failedSeeks() != 0) return StatusReadFailed;
    if (opened.result() != CompoundOk) return StatusOk;
    const CompoundStorage storage{&opened};
    if (request != nullptr) return EnumerateMsgAttachments(storage, *request);
    return MessageReader(message, data, storage).run();
  } catch (const std::bad_alloc&) {
    return StatusOutOfMemory;
  }
}

}  // namespace tarn
