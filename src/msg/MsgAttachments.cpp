#include "msg/MsgAttachments.h"

#include <cstring>
#include <new>
#include <optional>
#include <string_view>

#include "Common/AttachmentProperties.h"
#include "msg/AttachmentPath.h"
#include "msg/EmbeddedMessage.h"
#include "msg/MsgStreams.h"

namespace tarn {
namespace {

constexpr uint64_t kAttachmentRecordsStart = 24;  // in the properties stream
constexpr uint64_t kSmallestProperties = 40;
constexpr uint16_t kCreationTime = 0x3007;
constexpr uint16_t kModificationTime = 0x3008;

struct TextProperty {
  std::string_view stream;
  const char* name;
};

constexpr TextProperty kTextProperties[] = {
    {"__substg1.0_3712", "Content-ID:"},
    {"__substg1.0_370E", "MimeType"},
};

struct TimeProperty {
  uint16_t id;
  const char* name;
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

  int32_t run();

 private:
  void readName();
  int32_t addTexts();
  int32_t addTimes();
  int32_t readData();
  int32_t exportMessage();
  int32_t callBack();

  const CompoundStorage& storage_;
  AttachmentPath path_;
  const AttachmentRequest& request_;
  SizedBytes name_;
  PropertyList properties_;
  TrackedBuffer<char> data_{0, 1024, 1};
};

int32_t Delivery::run() {
  readName();
  if (!path_.hasRoomForData()) return StatusOk;
  int32_t status = StatusOk;
  if (request_.infoOnly != 0) {
    status = addTexts();
    if (status == StatusOk) status = addTimes();
  } else {
    status = readData();
  }
  return status == StatusOk ? callBack() : status;
}

// A name that cannot be read is no name.
void Delivery::readName() {
  const int32_t status = ReadMsgTextProperty(storage_, path_.of("__substg1.0_3707"), name_);
  if (status == StatusOk && !name_.isEmptyText()) return;
  ReadMsgTextProperty(storage_, path_.of("__substg1.0_3704"), name_);
}

int32_t Delivery::addTexts() {
  for (const TextProperty& property : kTextProperties) {
    SizedBytes text;
    const int32_t read = ReadMsgTextProperty(storage_, path_.of(property.stream), text);
    if (read != StatusOk) return read;
    if (text.isEmptyText()) continue;
    const int32_t added =
        AddAttachmentProperty(properties_, property.name, text.data(), text.length());
    if (added != StatusOk) return added;
  }
  return StatusOk;
}

int32_t Delivery::addTimes() {
  SizedBytes records;
  const int32_t read = ReadMsgStream(storage_, path_.of(kPropertiesStream), records);
  if (read < StatusOk) return read;
  if (read != StatusOk || records.length() < kSmallestProperties) return StatusOk;
  for (const TimeProperty& property : kTimeProperties) {
    uint64_t value = 0;
    if (!FindPropertyRecord(records.view(), kAttachmentRecordsStart, kPropertyTime, property.id,
                            value)) {
      continue;
    }
    const int32_t added = AddTimeAttachmentProperty(properties_, property.name, value);
    if (added != StatusOk) return added;
  }
  return StatusOk;
}

int32_t Delivery::readData() {
  std::optional<CompoundStream> stream = storage_.file->open(path_.of("__substg1.0_37010102"));
  if (!stream) return exportMessage();
  KernelBlock<char> block;
  uint64_t length = 0;
  const int32_t read = ReadWholeStream(&*stream, block, length);
  if (read != StatusOk) return read;
  data_.adopt(std::move(block), length, length);
  return StatusOk;
}

int32_t Delivery::exportMessage() {
  const int32_t status = ExportEmbeddedMessage(storage_, path_.of("__substg1.0_3701000D"), data_);
  if (status != StatusOk) return status;
  return data_.length() != 0 ? StatusOk : StatusOutOfMemory;
}

int32_t Delivery::callBack() {
  KernelBlock<char16_t> wide;
  const char16_t* name = nullptr;
  if (name_.data() != nullptr) {
    name = u"";
    const std::string_view text = name_.text();
    const uint64_t room = (text.size() + 1) * sizeof(char16_t);
    wide.reset(static_cast<char16_t*>(KernelRealloc(nullptr, room, TARN_HERE)));
    if (wide) {
      // Cleared, so that the name ends where the conversion does: not every kernel tells the units.
      std::memset(wide.get(), 0, room);
      const int64_t converted = KernelUtf8ToWide(text.data(), static_cast<int64_t>(text.size()),
                                                 wide.get(), static_cast<int64_t>(text.size() + 1));
      if (converted == 0) wide[0] = u'\0';
      name = wide.get();
    }
  }
  return request_.callback(request_.user, &data_, name, &properties_);
}

// 1 for an attachment that is not asked for; 2 for one that is passed over.
int32_t DeliverMsgAttachment(const CompoundStorage& storage, std::string_view name,
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

int32_t EnumerateMsgAttachments(const CompoundStorage& storage,
                                const AttachmentRequest& request) try {
  if (request.callback == nullptr) return StatusOk;
  uint32_t number = 1;
  for (const KernelString& name : ListAttachments(storage)) {
    const int32_t status = DeliverMsgAttachment(storage, name, request, number++);
    if (status < StatusOk) return status;
  }
  return StatusOk;
} catch (const std::bad_alloc&) {
  return StatusOutOfMemory;
}

}  // namespace tarn
