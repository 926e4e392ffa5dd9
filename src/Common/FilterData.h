// FilterData.h - the host's slot: a single document record, or a list of items that share it.
//
//   slot.data -> PstFilterData              one item; or
//   slot.data -> FilterDataList             slot.dataFormat is -2, slot.dataSize 0
//                  entries[0]               the filter's PstFilterData
//                  entries[k + 1]           what the sibling wants kept for message index k
//
// The slot is the host's and may be damaged: every field of a list is checked before it is trusted.
// A sound list begins with its signature, is as large as the slot says (when it does say), counts
// at least two entries and is large enough for them. Nothing here owns an item. The list is a
// kernel block; who takes a list out of the slot frees it.
#ifndef TARN_COMMON_FILTERDATA_H
#define TARN_COMMON_FILTERDATA_H

#include "Internal/PstFilterData.h"

namespace tarn {

// The document record in the slot. `reserved` is 0. `out` is set on success only.
//   StatusOk
//   StatusNullArgument  a null or empty slot, or a null `out`
//   StatusBadArgument   neither a record nor a sound list with a record in it
Status FindFilterData(const FilterDataSlot* slot, uint32_t reserved, PstFilterData** out);

// Sees that the slot has room for `count` entries; a single item moves to entry 0 of a new list. A
// slot's room is 0 when it is empty, 1 with a single item (so no list is made for one entry), and a
// list's is its count of entries in use. A new list starts with a count of 0, or 1 for the item
// moved; until its maker raises the count to 2 it is not sound.
//   StatusOk
//   StatusNullArgument  a null slot
//   StatusBadArgument   a malformed list
//   StatusOutOfMemory   the slot is as it was
Status EnsureFilterDataList(FilterDataSlot* slot, int32_t count);

// Stores an item at `index`: an empty slot takes item 0 directly, all others go into the list, and
// the list's count rises to index + 1 if lower. A format of -1 or -2 means the slot's default. Null
// data is no item: nothing happens.
//   StatusOk
//   StatusNullArgument  a null slot
//   StatusListIndex     an index that no list can have
//   StatusSlotConflict  another item is there
//   a failure of EnsureFilterDataList
Status SetFilterDataEntry(FilterDataSlot* slot, int32_t index, void* data, uint64_t size,
                          int32_t format);

// The slot's list when it is a sound one, else null. A record need not be in it.
FilterDataList* SlotList(const FilterDataSlot* slot);

}  // namespace tarn

#endif
