#include "Handles.h"

#include <mutex>
#include <utility>
#include <vector>

#include "Lock.h"
#include "Tarnbase/Kernel.h"
#include "Undying.h"

namespace tarn::kernel {
namespace {

struct Slot {
  std::shared_ptr<OpenFile> file;  // null: free
  uint32_t generation = 1;
  HandleGroup group = HandleGroup::Host;
};

struct Slots {
  Lock mutex;
  std::vector<Slot> slots;
  std::vector<uint32_t> freeSlots;  // has room for every slot, so that dropping never allocates
  uint64_t live = 0;

  Slot* Find(HandleGroup group, uint64_t handle) {
    const uint64_t number = handle & UINT32_MAX;
    if (number == 0 || number > slots.size()) return nullptr;
    Slot& slot = slots[static_cast<size_t>(number - 1)];
    const bool same = slot.file != nullptr && slot.generation == handle >> 32;
    return same && slot.group == group ? &slot : nullptr;
  }
};

}  // namespace

uint64_t GiveHandle(HandleGroup group, std::shared_ptr<OpenFile> file) {
  if (file == nullptr) return KERNEL_BAD_HANDLE;
  Slots& all = Undying<Slots>();
  const std::lock_guard lock(all.mutex);
  if (all.freeSlots.empty()) {
    all.slots.emplace_back();
    all.freeSlots.reserve(all.slots.capacity());
    all.freeSlots.push_back(static_cast<uint32_t>(all.slots.size() - 1));
  }
  const uint32_t number = all.freeSlots.back();
  all.freeSlots.pop_back();
  Slot& slot = all.slots[number];
  slot.file = std::move(file);
  slot.group = group;
  ++all.live;
  return static_cast<uint64_t>(slot.generation) << 32 | (number + 1);
}

std::shared_ptr<OpenFile> FileOfHandle(HandleGroup group, uint64_t handle) noexcept {
  Slots& all = Undying<Slots>();
  const std::lock_guard lock(all.mutex);
  const Slot* const slot = all.Find(group, handle);
  return slot == nullptr ? nullptr : slot->file;
}

bool DropHandle(HandleGroup group, uint64_t handle) noexcept {
  Slots& all = Undying<Slots>();
  std::shared_ptr<OpenFile> file;  // closed after the lock is let go
  const std::lock_guard lock(all.mutex);
  Slot* const slot = all.Find(group, handle);
  if (slot == nullptr) return false;
  file = std::move(slot->file);
  slot->file = nullptr;
  // Generation 0 would make small numbers handles, and the last one the failed handle.
  slot->generation = slot->generation >= UINT32_MAX - 1 ? 1 : slot->generation + 1;
  all.freeSlots.push_back(static_cast<uint32_t>(handle & UINT32_MAX) - 1);
  --all.live;
  return true;
}

uint64_t LiveHandles() noexcept {
  Slots& all = Undying<Slots>();
  const std::lock_guard lock(all.mutex);
  return all.live;
}

}  // namespace tarn::kernel
