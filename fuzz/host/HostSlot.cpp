#include "host/HostSlot.h"

#include <cstring>

#include "Internal/Tarnclasses_.h"
#include "host/Expect.h"

namespace tarn::fuzz {
namespace {

constexpr uint32_t kRecordSignature = 0x545350;
constexpr uint64_t kRoom = 8;  // entries of the host's own lists
constexpr uint64_t kListBytes = (kRoom - 1) * sizeof(FilterDataEntry) + sizeof(FilterDataList);

bool IsRecord(const void* data) {
  uint32_t signature = 0;
  if (data != nullptr) std::memcpy(&signature, data, sizeof signature);
  return signature == kRecordSignature;
}

}  // namespace

FilterDataList* HostSlot::list() const {
  const bool isList = slot_.data != nullptr && slot_.dataFormat == FILTER_DATA_LIST_FORMAT;
  return isList ? static_cast<FilterDataList*>(slot_.data) : nullptr;
}

void* HostSlot::record() const {
  const FilterDataList* const entries = list();
  // The filter's record is the first entry of a list that the filter made or filled.
  void* const data = entries != nullptr ? entries->entries[0].data : slot_.data;
  return data != item_ && IsRecord(data) ? data : nullptr;
}

void HostSlot::endRecord() {
  void* const ended = record();
  if (ended == nullptr) return;
  Expect(fltFreeData(ended, 0) == StatusOk, "fltFreeData refused a record");
  if (FilterDataList* const entries = list()) {
    entries->entries[0].data = nullptr;
  } else {
    slot_.data = nullptr;
    slot_.dataSize = 0;
    slot_.dataFormat = 0;
  }
}

void HostSlot::clear() {
  endRecord();
  if (void* const block = list()) KernelFree(block, TARN_HERE);
  if (item_ != nullptr) KernelFree(item_, TARN_HERE);
  item_ = nullptr;
  slot_ = {};
  slot_.defaultFormat = kDefaultFormat;
}

void HostSlot::putItem(uint8_t size) {
  if (slot_.data != nullptr) return;
  const uint64_t bytes = 1 + size % 32;
  item_ = KernelAllocZero(bytes, 1, TARN_HERE);
  slot_.data = item_;
  slot_.dataSize = bytes;
  slot_.dataFormat = 7;
}

void HostSlot::putList(uint8_t count) {
  if (slot_.data != nullptr) return;
  auto* const made = static_cast<FilterDataList*>(KernelAllocZero(kListBytes, 1, TARN_HERE));
  made->signature = FILTER_DATA_LIST_SIGNATURE;
  made->count = count % 8;
  made->size = kListBytes;
  if ((count & 8) != 0) {
    item_ = KernelAllocZero(4, 1, TARN_HERE);
    made->entries[0] = {item_, 4, 7, 0};
  }
  slot_.data = made;
  slot_.dataSize = (count & 16) != 0 ? kListBytes : 0;
  slot_.dataFormat = FILTER_DATA_LIST_FORMAT;
}

void HostSlot::putBadList(uint8_t kind) {
  if (slot_.data != nullptr) return;
  putList(2);
  FilterDataList& bad = *list();
  switch (kind % 4) {
    case 0:
      bad.signature ^= 1;
      break;
    case 1:
      bad.count = static_cast<int32_t>(kRoom) + 1;
      break;
    case 2:
      bad.count = -1;
      break;
    default:
      slot_.dataSize = kListBytes + sizeof(FilterDataEntry);
      break;
  }
}

}  // namespace tarn::fuzz
