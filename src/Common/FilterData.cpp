#include "Common/FilterData.h"

namespace tarn {
namespace {

constexpr uint64_t BlockSize(uint64_t capacity) {
  return (capacity - 1) * sizeof(FilterDataEntry) + sizeof(FilterDataList);
}

// A size of 0 says that nobody told it.
bool BeginsWith(const void* data, uint64_t size, uint32_t signature) {
  if (size != 0 && size < sizeof(signature)) return false;
  uint32_t found = 0;
  std::memcpy(&found, data, sizeof(found));
  return found == signature;
}

// The list in the slot, whether or not a record is among its entries; null when it is not sound.
FilterDataList* SoundList(const FilterDataSlot& slot) {
  if (slot.data == nullptr || slot.dataFormat != FILTER_DATA_LIST_FORMAT) return nullptr;
  // No sound list is smaller than two entries.
  if (slot.dataSize != 0 && slot.dataSize < BlockSize(2)) return nullptr;
  if (!BeginsWith(slot.data, slot.dataSize, FILTER_DATA_LIST_SIGNATURE)) return nullptr;
  auto* const list = static_cast<FilterDataList*>(slot.data);
  if (slot.dataSize != 0 && slot.dataSize != list->size) return nullptr;
  if (list->count < 2 || list->size < BlockSize(static_cast<uint64_t>(list->count))) return nullptr;
  return list;
}

int32_t FormatOrDefault(const FilterDataSlot& slot, int32_t format) {
  return format == -1 || format == FILTER_DATA_LIST_FORMAT ? slot.defaultFormat : format;
}

// A list of at least two entries gets a larger block; null without memory, and then it is as it
// was.
FilterDataList* GrowList(FilterDataList* list, uint64_t newSize) {
  const uint64_t inUse = BlockSize(static_cast<uint64_t>(list->count));
  void* const block = KernelRealloc(list, newSize, TARN_HERE);
  if (block != nullptr) std::memset(static_cast<char*>(block) + inUse, 0, newSize - inUse);
  return static_cast<FilterDataList*>(block);
}

// A list without entries, or with the slot's single item as entry 0; null without memory.
FilterDataList* NewList(const FilterDataSlot& slot, uint64_t size) {
  auto* const list = static_cast<FilterDataList*>(KernelAllocZero(size, 1, TARN_HERE));
  if (list == nullptr) return nullptr;
  list->signature = FILTER_DATA_LIST_SIGNATURE;
  if (slot.data != nullptr) {
    list->entries[0] = {slot.data, slot.dataSize, slot.dataFormat, 0};
    list->count = 1;
  }
  return list;
}

}  // namespace

FilterDataList* SlotList(const FilterDataSlot* slot) {
  if (slot == nullptr || slot->data == nullptr) return nullptr;
  return SoundList(*slot);
}

Status FindFilterData(const FilterDataSlot* slot, uint32_t /*reserved*/, PstFilterData** out) {
  if (slot == nullptr || slot->data == nullptr || out == nullptr) return StatusNullArgument;
  if (BeginsWith(slot->data, slot->dataSize, kFilterDataSignature)) {
    *out = static_cast<PstFilterData*>(slot->data);
    return StatusOk;
  }
  const FilterDataList* const list = SoundList(*slot);
  if (list == nullptr) return StatusBadArgument;
  const FilterDataEntry* const end = list->entries + list->count;
  for (const FilterDataEntry* entry = list->entries; entry != end; ++entry) {
    if (entry->data == nullptr) continue;
    if (!BeginsWith(entry->data, entry->size, kFilterDataSignature)) continue;
    *out = static_cast<PstFilterData*>(entry->data);
    return StatusOk;
  }
  return StatusBadArgument;
}

Status EnsureFilterDataList(FilterDataSlot* slot, int32_t count) {
  if (slot == nullptr) return StatusNullArgument;
  int32_t capacity = slot->data == nullptr ? 0 : 1;
  FilterDataList* list = nullptr;
  if (slot->data != nullptr && slot->dataFormat == FILTER_DATA_LIST_FORMAT) {
    list = SoundList(*slot);
    if (list == nullptr) return StatusBadArgument;
    // What the block holds beyond the entries in use is not counted on.
    capacity = list->count;
  }
  if (capacity >= count) return StatusOk;

  const uint64_t size = BlockSize(static_cast<uint64_t>(count));
  list = list != nullptr ? GrowList(list, size) : NewList(*slot, size);
  if (list == nullptr) return StatusOutOfMemory;
  list->size = size;
  slot->data = list;
  slot->dataSize = 0;
  slot->dataFormat = FILTER_DATA_LIST_FORMAT;
  return StatusOk;
}

Status SetFilterDataEntry(FilterDataSlot* slot, int32_t index, void* data, uint64_t size,
                          int32_t format) {
  if (data == nullptr) return StatusOk;
  if (slot == nullptr) return StatusNullArgument;
  if (index < 0 || index == INT32_MAX) return StatusListIndex;
  format = FormatOrDefault(*slot, format);

  if (index == 0 && slot->data == nullptr) {
    slot->data = data;
    slot->dataSize = size;
    slot->dataFormat = format;
    return StatusOk;
  }
  if (index == 0 && slot->data == data) return StatusOk;

  const Status ensured = EnsureFilterDataList(slot, index + 1);
  if (!ensured.ok()) return ensured;
  // One item fills a slot of capacity 1, and no list is made for it.
  if (slot->dataFormat != FILTER_DATA_LIST_FORMAT) return StatusSlotConflict;
  auto* const list = static_cast<FilterDataList*>(slot->data);
  FilterDataEntry& entry = list->entries[index];
  if (entry.data != nullptr && entry.data != data) return StatusSlotConflict;
  entry = {data, size, format, 0};
  if (list->count < index + 1) list->count = index + 1;
  return StatusOk;
}

}  // namespace tarn
