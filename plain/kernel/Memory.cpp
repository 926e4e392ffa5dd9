// The four memory operations on the ordinary heap.
//
// Every live block is in a table, which is the C++ runtime's memory, not in a header before the
// block: a pointer that is no live block is told apart without reading the memory around it.
#include "Memory.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "Faults.h"
#include "Fence.h"
#include "Lock.h"
#include "Report.h"
#include "Tarnbase/Kernel.h"
#include "Undying.h"

namespace tarn::kernel {
namespace {

// Larger requests fail without asking the heap, some of which end the process over them.
constexpr uint64_t kLargestBlock = uint64_t{1} << 39;

struct BlockRecord {
  uint64_t bytes = 0;
  const char16_t* file = nullptr;
  int32_t line = 0;
  bool isLive = true;
};

// The live blocks, and some that were: the heap gives the same addresses out again and again, and
// an entry that is there is quicker than a new one. What was met last is found without the hash
// table, whose division costs as much as a small block.
class BlockTable {
 public:
  using Entry = std::pair<const void* const, BlockRecord>;

  // Adds a live block. May throw std::bad_alloc, and then nothing was added.
  void Add(const void* block, const BlockRecord& record) {
    Entry* entry = Known(block);
    if (entry == nullptr) entry = &*records_.try_emplace(block).first;
    entry->second = record;
    Recent(block) = entry;
    ++liveCount_;
  }

  // The entry of a live block; null for any other address. Valid until the next change.
  Entry* Find(const void* block) {
    Entry* entry = Known(block);
    if (entry == nullptr) {
      const auto found = records_.find(block);
      if (found == records_.end()) return nullptr;
      entry = &*found;
    }
    return entry->second.isLive ? entry : nullptr;
  }

  // Takes out the live block of this entry.
  void Remove(Entry& entry) {
    entry.second.isLive = false;
    --liveCount_;
    if (records_.size() > 2 * liveCount_ + kFewEntries) DropTheDead();
  }

  // The live block of this entry is at that address now. That takes no memory: the entry goes
  // along, unless the new address has one.
  void Move(Entry& entry, const void* to, const BlockRecord& record) {
    if (entry.first == to) {
      entry.second = record;
      return;
    }
    Recent(entry.first) = nullptr;
    auto node = records_.extract(entry.first);
    node.key() = to;
    Entry& moved = *records_.insert(std::move(node)).position;
    moved.second = record;
    Recent(to) = &moved;
  }

  size_t LiveCount() const { return liveCount_; }

  template <typename Visit>
  void ForEachLive(Visit visit) const {
    for (const auto& [block, record] : records_) {
      if (record.isLive) visit(block, record);
    }
  }

 private:
  static constexpr size_t kFewEntries = 16384;

  Entry*& Recent(const void* block) {
    return recent_[(reinterpret_cast<uintptr_t>(block) >> 4) % recent_.size()];
  }

  Entry* Known(const void* block) {
    Entry* const entry = Recent(block);
    return entry != nullptr && entry->first == block ? entry : nullptr;
  }

  void DropTheDead() {
    recent_.fill(nullptr);
    std::erase_if(records_, [](const auto& entry) { return !entry.second.isLive; });
  }

  std::unordered_map<const void*, BlockRecord> records_;
  std::array<Entry*, 1024> recent_ = {};
  size_t liveCount_ = 0;
};

struct Blocks {
  Lock mutex;
  BlockTable table;
  uint64_t liveBytes = 0;
  uint64_t peakBytes = 0;

  void Count(uint64_t bytes) {
    liveBytes += bytes;
    peakBytes = std::max(peakBytes, liveBytes);
  }
};

Blocks& AllBlocks() { return Undying<Blocks>(); }

constinit std::atomic<uint64_t> allocationCalls{0};

// A heap block of at least one byte, so that a block of 0 bytes has an address of its own.
void* HeapAllocate(uint64_t bytes, bool zeroFill) {
  if (bytes > kLargestBlock) return nullptr;
  const size_t size = static_cast<size_t>(std::max<uint64_t>(bytes, 1));
  return zeroFill ? std::calloc(1, size) : std::malloc(size);
}

bool CountedFault() {
  allocationCalls.fetch_add(1, std::memory_order_relaxed);
  return FaultDue(PlainKernelFaultMemory);
}

// False when the table has no memory for it.
bool Record(const void* block, const BlockRecord& record) {
  Blocks& all = AllBlocks();
  const std::lock_guard lock(all.mutex);
  return Fenced(false, [&] {
    all.table.Add(block, record);
    all.Count(record.bytes);
    return true;
  });
}

void* NewBlock(uint64_t bytes, bool zeroFill, int32_t line, const char16_t* file) {
  void* const block = HeapAllocate(bytes, zeroFill);
  if (block == nullptr || Record(block, {bytes, file, line})) return block;
  std::free(block);
  return nullptr;
}

void* NewBlock(uint64_t count, uint64_t size, bool zeroFill, int32_t line, const char16_t* file) {
  if (CountedFault()) return nullptr;
  if (size != 0 && count > UINT64_MAX / size) return nullptr;
  return NewBlock(count * size, zeroFill, line, file);
}

}  // namespace

bool IsLiveBlock(const void* block, uint64_t bytes) {
  Blocks& all = AllBlocks();
  const std::lock_guard lock(all.mutex);
  const BlockTable::Entry* const entry = all.table.Find(block);
  return entry != nullptr && entry->second.bytes >= bytes;
}

void ReportBlocks(PlainKernelUsageRecord& usage) {
  Blocks& all = AllBlocks();
  const std::lock_guard lock(all.mutex);
  usage.liveBlocks = all.table.LiveCount();
  usage.liveBytes = all.liveBytes;
  usage.peakBytes = all.peakBytes;
  usage.allocationCalls = allocationCalls.load(std::memory_order_relaxed);
}

bool ListBlocks() {
  Blocks& all = AllBlocks();
  const std::unique_lock lock(all.mutex, std::try_to_lock);
  if (!lock) return false;
  all.table.ForEachLive([](const void* block, const BlockRecord& record) {
    ReportLeak("block", block, record.line, record.file);
  });
  return true;
}

}  // namespace tarn::kernel

using namespace tarn::kernel;

void* KernelAlloc(uint64_t count, uint64_t size, int32_t line, const char16_t* file) {
  return NewBlock(count, size, false, line, file);
}

void* KernelAllocZero(uint64_t count, uint64_t size, int32_t line, const char16_t* file) {
  return NewBlock(count, size, true, line, file);
}

void* KernelRealloc(void* block, uint64_t bytes, int32_t line, const char16_t* file) {
  const bool fault = CountedFault();
  if (block == nullptr) return fault ? nullptr : NewBlock(bytes, false, line, file);

  // The lock is held while the heap moves the block: the old address may be given out again at
  // once, and must not be in the table then.
  Blocks& all = AllBlocks();
  std::unique_lock lock(all.mutex);
  BlockTable::Entry* const entry = all.table.Find(block);
  if (entry == nullptr) {
    lock.unlock();
    AbortOnMisuse("KernelRealloc", "not a live block", block, line, file);
  }
  const bool refused = fault || bytes > kLargestBlock;
  void* const moved =
      refused ? nullptr : std::realloc(block, static_cast<size_t>(std::max<uint64_t>(bytes, 1)));
  if (moved == nullptr) return nullptr;
  all.liveBytes -= entry->second.bytes;
  all.Count(bytes);
  all.table.Move(*entry, moved, {bytes, file, line});
  return moved;
}

void KernelFree(void* block, int32_t line, const char16_t* file) {
  Blocks& all = AllBlocks();
  std::unique_lock lock(all.mutex);
  BlockTable::Entry* const entry = all.table.Find(block);
  const bool isLive = entry != nullptr;
  if (isLive) {
    all.liveBytes -= entry->second.bytes;
    all.table.Remove(*entry);
  }
  lock.unlock();
  if (!isLive) AbortOnMisuse("KernelFree", "not a live block", block, line, file);
  std::free(block);
}
