// A growing block as a file. The handle and the state hold one MemoryFile together; the block's
// fate is decided when the state ends.
#include "MemoryFiles.h"

#include <algorithm>
#include <mutex>
#include <unordered_map>

#include "Faults.h"
#include "Fence.h"
#include "Handles.h"
#include "Lock.h"
#include "Memory.h"
#include "TarnPst.h"
#include "Tarnbase/Kernel.h"
#include "Undying.h"

namespace tarn::kernel {
namespace {

constexpr uint64_t kLastPosition = INT64_MAX;  // a position is never the failed one

struct Contents {
  char* block = nullptr;
  uint64_t length = 0;
  uint64_t capacity = 0;
};

class MemoryFile final : public OpenFile {
 public:
  explicit MemoryFile(const Contents& given) : contents_(given), given_(given.block) {}

  uint64_t Read(std::span<char> room) override {
    const std::lock_guard lock(mutex_);
    if (position_ >= contents_.length) return 0;
    const uint64_t count = std::min(room.size(), contents_.length - position_);
    std::copy_n(contents_.block + position_, count, room.data());
    position_ += count;
    return count;
  }

  uint64_t Write(std::string_view bytes) override {
    const std::lock_guard lock(mutex_);
    const uint64_t count = bytes.size();
    if (count == 0 || count > kLastPosition - position_ || !Reach(position_ + count)) return 0;
    if (position_ > contents_.length) {
      std::fill(contents_.block + contents_.length, contents_.block + position_, '\0');
    }
    bytes.copy(contents_.block + position_, count);
    position_ += count;
    contents_.length = std::max(contents_.length, position_);
    return count;
  }

  uint64_t Seek(int64_t offset, int32_t origin) override {
    const std::lock_guard lock(mutex_);
    uint64_t base = 0;
    if (origin == KERNEL_SEEK_CURRENT) base = position_;
    if (origin == KERNEL_SEEK_END) base = contents_.length;
    if (origin < KERNEL_SEEK_START || origin > KERNEL_SEEK_END) return UINT64_MAX;
    const uint64_t target = base + static_cast<uint64_t>(offset);
    // Both terms lie within 63 bits, so a sum outside them shows in the top bit.
    if (target > kLastPosition) return UINT64_MAX;
    position_ = target;
    return target;
  }

  // Ends the file: nothing can be read or written any more, and the caller decides on the block.
  Contents TakeContents(bool& moved) {
    const std::lock_guard lock(mutex_);
    moved = contents_.block != given_;
    const Contents taken = contents_;
    contents_ = Contents();
    ended_ = true;
    return taken;
  }

 private:
  // Makes room up to `end`, growing by at least a half.
  bool Reach(uint64_t end) {
    if (ended_) return false;
    if (end <= contents_.capacity) return true;
    const uint64_t half = contents_.capacity / 2 + contents_.capacity % 2;
    const uint64_t capacity = std::max(end, contents_.capacity + half);
    void* const block = KernelRealloc(contents_.block, capacity, __LINE__, u"" __FILE__);
    if (block == nullptr) return false;
    contents_.block = static_cast<char*>(block);
    contents_.capacity = capacity;
    return true;
  }

  Lock mutex_;
  Contents contents_;
  const char* given_;
  uint64_t position_ = 0;
  bool ended_ = false;
};

struct State {
  std::shared_ptr<MemoryFile> file;
  uint64_t handle = KERNEL_BAD_HANDLE;
};

// States are numbers that only look like pointers, so that one that has ended is never taken for
// another.
struct States {
  Lock mutex;
  std::unordered_map<uintptr_t, State> live;
  uintptr_t last = 0;
};

bool IsSound(int32_t mode, const void* block, uint64_t length, uint64_t capacity) {
  if (mode != KERNEL_MEMFILE_EMPTY && mode != KERNEL_MEMFILE_FILLED) return false;
  if (mode == KERNEL_MEMFILE_EMPTY && length != 0) return false;
  if (length > capacity || capacity > kLastPosition) return false;
  return block == nullptr ? capacity == 0 : IsLiveBlock(block, capacity);
}

TarnStatus OpenMemoryFile(uint64_t& handle, void*& state, const Contents& given) {
  const auto file = std::make_shared<MemoryFile>(given);
  States& states = Undying<States>();
  const std::lock_guard lock(states.mutex);
  const uintptr_t key = states.last + 16;
  State& entry = states.live[key];
  try {
    entry.handle = GiveHandle(HandleGroup::Host, file);
  } catch (...) {
    states.live.erase(key);
    throw;
  }
  entry.file = file;
  states.last = key;
  handle = entry.handle;
  // A number that only looks like an address: nobody follows it.
  state = reinterpret_cast<void*>(key);  // NOLINT(performance-no-int-to-ptr)
  return StatusOk;
}

bool TakeState(void* state, State& taken) {
  States& states = Undying<States>();
  const std::lock_guard lock(states.mutex);
  const auto found = states.live.find(reinterpret_cast<uintptr_t>(state));
  if (found == states.live.end()) return false;
  taken = std::move(found->second);
  states.live.erase(found);
  return true;
}

}  // namespace

uint64_t UnendedMemoryFiles() noexcept {
  States& states = Undying<States>();
  const std::lock_guard lock(states.mutex);
  uint64_t count = 0;
  for (const auto& entry : states.live) {
    if (FileOfHandle(HandleGroup::Host, entry.second.handle) == nullptr) ++count;
  }
  return count;
}

}  // namespace tarn::kernel

using namespace tarn::kernel;

int32_t KernelMemFileOpen(uint64_t* handle, void** state, int32_t mode, void* block,
                          uint64_t length, uint64_t capacity) {
  if (FaultDue(PlainKernelFaultOpen)) return StatusCreateFailed;
  if (handle == nullptr || state == nullptr || !IsSound(mode, block, length, capacity)) {
    return StatusCreateFailed;
  }
  return Fenced(StatusCreateFailed, [&] {
    return OpenMemoryFile(*handle, *state, Contents{static_cast<char*>(block), length, capacity});
  });
}

int32_t KernelMemFileClose(void* state, void** block, uint64_t* length, uint64_t* capacity) {
  State ended;
  if (!TakeState(state, ended)) return StatusBadArgument;
  DropHandle(HandleGroup::Host, ended.handle);
  bool moved = false;
  const Contents contents = ended.file->TakeContents(moved);
  if (block != nullptr) {
    *block = contents.block;
  } else if (moved) {
    // Nobody but the memory file knows where it lies now.
    KernelFree(contents.block, __LINE__, u"" __FILE__);
  }
  if (length != nullptr) *length = contents.length;
  if (capacity != nullptr) *capacity = contents.capacity;
  return StatusOk;
}
