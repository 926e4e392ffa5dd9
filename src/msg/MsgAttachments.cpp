#include "msg/MsgAttachments.h"

#include <new>
#include <optional>
#include <string_view>

#include "Common/ApiUtils.h"
#include "Common/AttachmentProperties.h"
#include "msg/EmbeddedMessage.h"
#include "msg/MsgStreams.h"
#include "msg/PropertyStreams.h"

namespace tarn {
namespace {

constexpr uint64_t kAttachmentRecordsStart = 24;  // in the properties stream
constexpr uint64_t kSmallestProperties = 40;
constexpr uint16_t kCreationTime = 0x3007;
constexpr uint16_t kModificationTime = 0x3008;

struct TextProperty {
  std::string_view stream;
  std::string_view name;
};

constexpr TextProperty kTextProperties[] = {
    {msg_stream::kContentId, "Content-ID:"},
    {msg_stream::kMimeTag, "MimeType"},
};

struct TimeProperty {
  uint16_t id;
  std::string_view name;
};

constexpr TimeProperty kTimeProperties[] = {
    {kCreationTime, "MsgCreationTime"},
    {kModificationTime, "MsgModificationTime"},
};

// One attachment on its way to the callback.
class Delivery {
 public:
  Delivery(const CompoundStorage& storage, std::string_view name, const AttachmentRequest& request)
      : storage_(storage), path_(name), request_(request) {}

  // kNoStream for an attachment that is passed over.
  Status run();

 private:
  Status addTexts();
  Status addTimes();
  Status readData();
  Status exportMessage();
  Status callBack();

  const CompoundStorage& storage_;
  AttachmentPath path_;
  const AttachmentRequest& request_;
  SizedBytes name_;
  PropertyList properties_;
  TrackedBuffer<char> data_{0, 1024, 1};
};

Status Delivery::run() {
  // A name that cannot be read is no name.
  ReadMsgFileName(storage_, path_, name_).ignore();
  if (!path_.hasRoomForData()) return StatusOk;
  Status status;
  if (request_.infoOnly) {
    status = addTexts();
    if (status.ok()) status = addTimes();
  } else {
    status = readData();
  }
  return status.ok() ? callBack() : status;
}

Status Delivery::addTexts() {
  for (const TextProperty& property : kTextProperties) {
    SizedBytes text;
    const Status read = ReadMsgTextProperty(storage_, path_.of(property.stream), text);
    if (!read.ok()) return read;
    if (text.isEmptyText()) continue;
    const Status added = AddAttachmentProperty(properties_, property.name, text.view());
    if (!added.ok()) return added;
  }
  return StatusOk;
}

Status Delivery::addTimes() {
  SizedBytes records;
  const Status read = ReadMsgStream(storage_, path_.of(msg_stream::kProperties), records);
  if (read.failed()) return read;
  if (read == kNoStream || records.length() < kSmallestProperties) return StatusOk;
  for (const TimeProperty& property : kTimeProperties) {
    const std::optional<uint64_t> time =
        FindPropertyRecord(records.view(), kAttachmentRecordsStart, kPropertyTime, property.id);
    if (!time) continue;
    const Status added = AddTimeAttachmentProperty(properties_, property.name, *time);
    if (!added.ok()) return added;
  }
  return StatusOk;
}

Status Delivery::readData() {
  std::optional<CompoundStream> stream = storage_.file->open(path_.of(msg_stream::kData));
  if (!stream) return exportMessage();
  SizedBytes bytes;
  const Status read = ReadWholeStream(&*stream, bytes);
  if (!read.ok()) return read;
  const uint64_t length = bytes.length();
  data_.adopt(bytes.take(), length, length);
  return StatusOk;
}

Status Delivery::exportMessage() {
  const Status status =
      ExportEmbeddedMessage(storage_, path_.of(msg_stream::kEmbeddedMessage), data_);
  if (!status.ok()) return status;
  return data_.length() != 0 ? StatusOk : StatusOutOfMemory;
}

// Without memory for the name, and when it is no UTF-8, it is the empty one.
Status Delivery::callBack() {
  if (!name_.hasBlock()) return request_.callback(request_.user, &data_, nullptr, &properties_);
  const std::string_view text = name_.text();
  const uint64_t units = text.size() + 1;
  const KernelBlock<char16_t> wide(
      static_cast<char16_t*>(KernelRealloc(nullptr, units * sizeof(char16_t), TARN_HERE)));
  const bool isRead = wide && ConvertToWide(text, {wide.get(), units});
  return request_.callback(request_.user, &data_, isRead ? wide.get() : u"", &properties_);
}

// StatusOk for an attachment that is not asked for.
Status DeliverMsgAttachment(const CompoundStorage& storage, std::string_view name,
                            const AttachmentRequest& request, uint32_t number) {
  if (request.index != kAllAttachments && request.index != number) return StatusOk;
  return Delivery(storage, name, request).run();
}

}  // namespace

KernelVector<KernelString> ListAttachments(const CompoundStorage& storage) {
  KernelVector<KernelString> names = ListEntryNames(storage, "/");
  std::erase_if(names, [&storage](const KernelString& name) {
    constexpr std::string_view kPrefix = "__attach_version1.0_";
    if (name.size() <= kPrefix.size() || !std::string_view(name).starts_with(kPrefix)) return true;
    if (!AttachmentPath::Holds(name)) return true;
    return !storage.file->isStorage(name);
  });
  return names;
}

Status ReadMsgFileName(const CompoundStorage& storage, AttachmentPath& path, SizedBytes& name) {
  const Status status = ReadMsgTextProperty(storage, path.of(msg_stream::kLongFileName), name);
  if (status.ok() && !name.isEmptyText()) return status;
  return ReadMsgTextProperty(storage, path.of(msg_stream::kShortFileName), name);
}

Status EnumerateMsgAttachments(const CompoundStorage& storage,
                               const AttachmentRequest& request) try {
  if (request.callback == nullptr) return StatusOk;
  uint32_t number = 1;
  for (const KernelString& name : ListAttachments(storage)) {
    const Status status = DeliverMsgAttachment(storage, name, request, number++);
    if (status.failed()) return status;
  }
  return StatusOk;
} catch (const std::bad_alloc&) {
  return StatusOutOfMemory;
}

}  // namespace tarn
