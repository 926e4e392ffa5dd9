#include "msg/MsgReader.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <optional>
#include <string_view>

#include "Common/ApiUtils.h"
#include "msg/MsgAttachments.h"
#include "msg/MsgStreams.h"
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
    {"__substg1.0_0037", &MailMessage::subject},
    {"__substg1.0_0C1A", &MailMessage::from},
    {"__substg1.0_5D01", &MailMessage::fromAddress},
};
constexpr std::string_view kRepresentedAddress = "__substg1.0_0065";
constexpr TextField kRecipientFields[] = {
    {"__substg1.0_004D", &MailMessage::originalAuthor},
    {"__substg1.0_0E04", &MailMessage::to},
    {"__substg1.0_0E03", &MailMessage::cc},
    {"__substg1.0_0E02", &MailMessage::bcc},
};

// Reads one message, step by step.
class MessageReader {
 public:
  MessageReader(MailMessage& message, PstFilterData& data, const CompoundStorage& storage)
      : message_(message), data_(data), storage_(storage) {}

  int32_t run();

 private:
  int32_t readBodies();
  int32_t readTexts(const TextField* first, const TextField* last);
  int32_t readSender();
  int32_t readFixedProperties();

  MailMessage& message_;
  PstFilterData& data_;
  const CompoundStorage& storage_;
};

int32_t MessageReader::run() {
  int32_t status = readBodies();
  if (status < StatusOk) return status;
  status = readSender();
  if (status < StatusOk) return status;
  status = readTexts(std::begin(kRecipientFields), std::end(kRecipientFields));
  if (status < StatusOk) return status;
  status = readFixedProperties();
  if (status < StatusOk) return status;

  if (data_.inlineFiles.data() == nullptr) {
    const int32_t placed = InlineMsgImages(message_, data_, storage_);
    if (placed != StatusOk && message_.inlineStatus == StatusOk) message_.inlineStatus = placed;
  }
  message_.attachmentCount = data_.attachmentCount;
  return StatusOk;
}

int32_t MessageReader::readBodies() {
  int32_t status = ReadMsgCompressedBody(message_, storage_);
  if (status < StatusOk) return status;
  if (status == kNoStream) {
    status = ReadMsgTextProperty(storage_, "__substg1.0_1013", message_.body);
    if (status < StatusOk) return status;
  }
  status = ReadMsgTextProperty(storage_, "__substg1.0_1000", message_.text);
  if (status < StatusOk) return status;
  const bool none = message_.text.data() == nullptr && message_.body.data() == nullptr;
  return none ? int32_t{StatusNotSupported} : int32_t{StatusOk};
}

int32_t MessageReader::readTexts(const TextField* first, const TextField* last) {
  for (; first != last; ++first) {
    const int32_t status = ReadMsgTextProperty(storage_, first->stream, message_.*first->field);
    if (status < StatusOk) return status;
  }
  return StatusOk;
}

// An address that is none of internet mail is dropped, whichever of the two it is.
int32_t MessageReader::readSender() {
  int32_t status = readTexts(std::begin(kSenderFields), std::end(kSenderFields));
  if (status < StatusOk) return status;
  SizedBytes& address = message_.fromAddress;
  if (address.isEmptyText()) {
    status = ReadMsgTextProperty(storage_, kRepresentedAddress, address);
    if (status < StatusOk) return status;
  }
  const std::string_view text = address.text();
  if (!text.empty() && text.find('@') == std::string_view::npos) {
    address.release();
    address.setLength(0);
  }
  return StatusOk;
}

int32_t MessageReader::readFixedProperties() {
  SizedBytes properties;
  const int32_t read = ReadMsgStream(storage_, kPropertiesStream, properties);
  if (read != StatusOk) return read < StatusOk ? read : int32_t{StatusOk};
  uint64_t value = 0;
  if (FindPropertyRecord(properties.view(), kMessageRecordsStart, kPropertyTime, kSubmitTime,
                         value)) {
    const int32_t status = FormatFileTime(static_cast<int64_t>(value), message_.sent);
    if (status < StatusOk) return status;
  }
  if (FindPropertyRecord(properties.view(), kMessageRecordsStart, kPropertyInteger, kImportance,
                         value)) {
    const auto importance = static_cast<int32_t>(static_cast<uint32_t>(value));
    const int32_t status = ImportanceText(importance, message_.importance);
    if (status < StatusOk) return status;
  }
  return StatusOk;
}

bool IsCompressedRtf(std::string_view bytes) {
  const std::string_view magic = bytes.substr(std::min<size_t>(8, bytes.size()), 4);
  return magic == "LZFu" || magic == "MELA";
}

}  // namespace

int32_t ReadMsgCompressedBody(MailMessage& message, const CompoundStorage& storage) try {
  std::optional<CompoundStream> stream = storage.file->open("__substg1.0_10090102");
  if (!stream) return kNoStream;
  KernelBlock<char> packed;
  uint64_t length = 0;
  const int32_t read = ReadWholeStream(&*stream, packed, length);
  if (read != StatusOk) return read;
  message.body.setLength(length);
  if (!IsCompressedRtf({packed.get(), length})) {
    message.compressedRtf = packed.take();
    return StatusOk;
  }

  const int32_t decoded = DecodeCompressedRtf(packed.take(), message, length);
  if (decoded != StatusOk) return decoded;
  if (message.body.view().starts_with("{\\rtf")) return StatusOk;
  return ScrubHtmlBody(message.body.data(), message.body.length());
} catch (const std::bad_alloc&) {
  return StatusOutOfMemory;
}

int32_t ReadMsgFile(MailMessage& message, PstFilterData& data, const char16_t* path,
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
