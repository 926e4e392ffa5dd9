#include "FileFormats/Pst/StoreWalk.h"

#include <exception>
#include <new>

#include "FileFormats/Pst/PstMessage.h"
#include "FileFormats/Pst/PstStreams.h"
#include "pststore/StoreObjects.h"

namespace tarn {
namespace {

constexpr pststore::ushort kDisplayName = 0x3001;
constexpr pststore::ushort kContentCount = 0x3602;

// What the folders claim; the sum wraps as a signed 32-bit number. StatusOk, or StatusOutOfMemory
// for more names than a file of this size can hold.
Status AddClaims(const Store& store, uint64_t fileSize, int32_t& claimed) {
  uint32_t total = 0;
  uint64_t textLeft = FolderTextLimit(fileSize);
  const pststore::folder_iterator end = pststore::folder_end(store);
  for (pststore::folder_iterator at = pststore::folder_begin(store); at != end; ++at) {
    const pststore::folder folder = pststore::make_folder(at);
    const pststore::property_bag& properties = folder.get_property_bag();
    if (!TakeFrom(textLeft, TextBytes(properties, kDisplayName))) return StatusOutOfMemory;
    if (properties.read_prop<pststore::wstring>(kDisplayName) == u"Freebusy Data") continue;
    total += properties.get_value_4(kContentCount);
  }
  claimed = static_cast<int32_t>(total);
  return StatusOk;
}

// One pass over the messages of a store.
class StoreWalk {
 public:
  StoreWalk(MessageList& list, const Store& store, int32_t selected, TarnDocumentKind& kind,
            StoreReading& reading)
      : list_(list), store_(store), selected_(selected), kind_(kind), reading_(reading) {}

  Status run();

 private:
  bool readFolder(const pststore::folder_iterator& at);
  bool readRows(const pststore::table& contents);

  MessageList& list_;
  const Store& store_;
  const int32_t selected_;
  TarnDocumentKind& kind_;
  StoreReading& reading_;
  int32_t next_ = 0;  // the number of the message to come
  Status status_;
};

Status StoreWalk::run() {
  try {
    const pststore::folder_iterator end = pststore::folder_end(store_);
    for (pststore::folder_iterator at = pststore::folder_begin(store_); at != end; ++at) {
      if (!readFolder(at)) return status_;
    }
  } catch (const std::exception&) {
    // The list of folders ends here; what has been read stays.
  }
  return StatusOk;
}

// False when the walk is over; a folder that breaks is left, and the walk goes on with the next.
bool StoreWalk::readFolder(const pststore::folder_iterator& at) {
  try {
    const pststore::folder folder = pststore::make_folder(at);
    return readRows(*pststore::get_contents_table(folder));
  } catch (const std::exception&) {
    return true;
  }
}

bool StoreWalk::readRows(const pststore::table& contents) {
  const pststore::message_iterator end(contents.end(), store_);
  for (pststore::message_iterator at(contents.begin(), store_); at != end; ++at) {
    if (next_ >= list_.count) return true;
    if (!TakeFrom(reading_.rowsLeft, 1)) {
      status_ = StatusOutOfMemory;
      return false;
    }
    const pststore::message message = pststore::make_message(at);
    status_ = next_ == selected_ ? ReadPstMessage(message, kind_, list_, reading_)
                                 : PassPstMessage(message, kind_, reading_);
    if (status_.failed()) return false;
    if (status_ == StatusDone) continue;
    if (next_ == selected_) {
      list_.count = selected_ + 1;
      status_ = StatusOk;
      return false;
    }
    ++next_;
  }
  return true;
}

}  // namespace

Status CountStoreMessages(MessageList*& list, const Store& store, uint64_t fileSize) {
  int32_t total = 0;
  const Status added = AddClaims(store, fileSize, total);
  if (added.ok() && total < 1) return StatusBadArgument;
  list = nullptr;
  if (!added.ok()) return added;
  if (static_cast<uint64_t>(total) > ClaimLimit(fileSize)) return StatusOutOfMemory;

  KernelBlock<MessageList> head = AllocateBlock<MessageList>(1, TARN_HERE);
  if (!head) return StatusOutOfMemory;
  auto* const records = new (std::nothrow) MailMessage[1];
  if (records == nullptr) return StatusOutOfMemory;
  KernelTrackObject(KERNEL_TRACK_ARRAY, records, TARN_HERE);
  list = new (head.take()) MessageList{total, records};
  return StatusOk;
}

Status WalkStoreMessages(MessageList& list, const Store& store, int32_t selected,
                         TarnDocumentKind& kind, StoreReading& reading) {
  return StoreWalk(list, store, selected, kind, reading).run();
}

void ReleaseMessageList(MessageList* list) {
  if (list == nullptr) return;
  if (list->count > 0 && list->records != nullptr) {
    KernelUntrackObject(KERNEL_TRACK_ARRAY, list->records, TARN_HERE);
    delete[] list->records;
  }
  KernelFree(list, TARN_HERE);
}

}  // namespace tarn
