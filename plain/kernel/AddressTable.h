// AddressTable.h - what the kernel knows about addresses it has given out or heard of.
//
// A hash table with open addressing and linear probing: entries lie in one array, an entry is found
// by walking from the slot its address hashes to, and a removal moves the entries behind it up, so
// that no walk ever meets a hole that was not there when an entry was placed. At least a quarter of
// the slots is free, which keeps walks short. The same address may stand in it more than once.
//
// Never touches the memory that an address names. Not locked: each owner has a mutex of its own.
// Has no destructor, so that calls made while the process ends still find it.
#ifndef TARN_KERNEL_ADDRESSTABLE_H
#define TARN_KERNEL_ADDRESSTABLE_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <type_traits>

namespace tarn::kernel {

template <typename Record>
class AddressTable {
  static_assert(std::is_trivially_copyable_v<Record>);

 public:
  constexpr AddressTable() = default;
  AddressTable(const AddressTable&) = delete;
  AddressTable& operator=(const AddressTable&) = delete;

  uint64_t size() const { return count_; }

  // False when the table would have to grow and cannot. `address` is not null.
  bool Insert(const void* address, const Record& record) {
    if (count_ >= slotCount_ / 4 * 3 && !Grow()) return false;
    Place(address, record);
    ++count_;
    return true;
  }

  // The first record of the address for which `matches` holds, or null. Valid until the next
  // change.
  template <typename Predicate>
  Record* Find(const void* address, Predicate matches) {
    const size_t slot = SlotOf(address, matches);
    return slot == kNoSlot ? nullptr : &slots_[slot].record;
  }
  Record* Find(const void* address) {
    return Find(address, [](const Record&) { return true; });
  }

  // Calls `visit` with every address and record, in no order.
  template <typename Visit>
  void ForEach(Visit visit) const {
    for (size_t slot = 0; slot < slotCount_; ++slot) {
      if (slots_[slot].address != nullptr) visit(slots_[slot].address, slots_[slot].record);
    }
  }

  // Takes that record out; false when there is none.
  template <typename Predicate>
  bool Take(const void* address, Record& taken, Predicate matches) {
    const size_t slot = SlotOf(address, matches);
    if (slot == kNoSlot) return false;
    taken = slots_[slot].record;
    Erase(slot);
    --count_;
    return true;
  }
  bool Take(const void* address, Record& taken) {
    return Take(address, taken, [](const Record&) { return true; });
  }

 private:
  struct Slot {
    const void* address;  // null: free
    Record record;
  };
  static constexpr size_t kNoSlot = SIZE_MAX;
  static constexpr size_t kFirstSlotCount = 1024;  // a power of two, like every later count

  size_t HomeOf(const void* address) const {
    // Blocks are aligned to 16 bytes; the multiplication spreads the rest over the high bits.
    const uint64_t key = static_cast<uint64_t>(reinterpret_cast<uintptr_t>(address)) >> 4;
    return static_cast<size_t>((key * 0x9E3779B97F4A7C15U) >> 32) & (slotCount_ - 1);
  }

  template <typename Predicate>
  size_t SlotOf(const void* address, Predicate matches) const {
    if (count_ == 0 || address == nullptr) return kNoSlot;
    for (size_t slot = HomeOf(address); slots_[slot].address != nullptr;
         slot = (slot + 1) & (slotCount_ - 1)) {
      if (slots_[slot].address == address && matches(slots_[slot].record)) return slot;
    }
    return kNoSlot;
  }

  void Place(const void* address, const Record& record) {
    size_t slot = HomeOf(address);
    while (slots_[slot].address != nullptr) slot = (slot + 1) & (slotCount_ - 1);
    slots_[slot] = Slot{address, record};
  }

  // Closes the hole: an entry further on moves into it unless its home lies behind the hole.
  void Erase(size_t hole) {
    const size_t mask = slotCount_ - 1;
    for (size_t slot = (hole + 1) & mask; slots_[slot].address != nullptr;
         slot = (slot + 1) & mask) {
      const size_t home = HomeOf(slots_[slot].address);
      if (((slot - home) & mask) >= ((slot - hole) & mask)) {
        slots_[hole] = slots_[slot];
        hole = slot;
      }
    }
    slots_[hole].address = nullptr;
  }

  bool Grow() {
    const size_t newCount = slotCount_ == 0 ? kFirstSlotCount : slotCount_ * 2;
    auto* newSlots = static_cast<Slot*>(std::calloc(newCount, sizeof(Slot)));
    if (newSlots == nullptr) return false;
    Slot* const oldSlots = slots_;
    const size_t oldCount = slotCount_;
    slots_ = newSlots;
    slotCount_ = newCount;
    for (size_t slot = 0; slot < oldCount; ++slot) {
      if (oldSlots[slot].address != nullptr) Place(oldSlots[slot].address, oldSlots[slot].record);
    }
    std::free(oldSlots);
    return true;
  }

  Slot* slots_ = nullptr;
  size_t slotCount_ = 0;
  uint64_t count_ = 0;
};

}  // namespace tarn::kernel

#endif
