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
  uint64_t bytes;
  const char16_t* file;
  int32_t line;
};

// The live blocks. Entries taken out are kept for those to come, as long as they are few: else each
// block would cost the runtime a block too. A sparse table is quicker by as much again.
class BlockTable {
 public:
  using Entry = std::unordered_map<const void*, BlockRecord>::node_type;

  BlockTable() { records_.max_load_factor(0.25F); }

  // May throw std::bad_alloc, and then nothing was added.
  void Add(const void* block, const BlockRecord& record) {
    if (spareCount_ == 0) {
      records_.emplace(block, record);
      return;
    }
    Entry entry = std::move(spares_[--spareCount_]);
    entry.key() = block;
    entry.mapped() = record;
    records_.insert(std::move(entry));
  }

  // The entry of a block; empty when it is not live.
  Entry Take(const void* block) { return records_.extract(block); }

  // Adds an entry just taken out, under the same or another address. That takes no memory.
  void PutBack(Entry entry) { records_.insert(std::move(entry)); }

  void Spare(Entry entry) {
    if (spareCount_ < spares_.size()) spares_[spareCount_++] = std::move(entry);
  }

  const BlockRecord* Find(const void* block) const {
    const auto found = records_.find(block);
    return found == records_.end() ? nullptr : &found->second;
  }

  const auto& all() const { return records_; }

 private:
  std::unordered_map<const void*, BlockRecord> records_;
  std::array<Entry, 256> spares_;
  size_t spareCount_ = 0;
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
  const BlockRecord* const record = all.table.Find(block);
  return record != nullptr && record->bytes >= bytes;
}

void ReportBlocks(PlainKernelUsageRecord& usage) {
  Blocks& all = AllBlocks();
  const std::lock_guard lock(all.mutex);
  usage.liveBlocks = all.table.all().size();
  usage.liveBytes = all.liveBytes;
  usage.peakBytes = all.peakBytes;
  usage.allocationCalls = allocationCalls.load(std::memory_order_relaxed);
}

bool ListBlocks() {
  Blocks& all = AllBlocks();
  const std::unique_lock lock(all.mutex, std::try_to_lock);
  if (!lock) return false;
  for (const auto& [block, record] : all.table.all()) {
    ReportLeak("block", block, record.line, record.file);
  }
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
  BlockTable::Entry entry = all.table.Take(block);
  if (entry.empty()) {
    lock.unlock();
    AbortOnMisuse("KernelRealloc", "not a live block", block, line, file);
  }
  const bool refused = fault || bytes > kLargestBlock;
  void* const moved =
      refused ? nullptr : std::realloc(block, static_cast<size_t>(std::max<uint64_t>(bytes, 1)));
  if (moved != nullptr) {
    all.liveBytes -= entry.mapped().bytes;
    all.Count(bytes);
    entry.key() = moved;
    entry.mapped() = {bytes, file, line};
  }
  all.table.PutBack(std::move(entry));
  return moved;
}

void KernelFree(void* block, int32_t line, const char16_t* file) {
  Blocks& all = AllBlocks();
  std::unique_lock lock(all.mutex);
  BlockTable::Entry entry = all.table.Take(block);
  const bool isLive = !entry.empty();
  if (isLive) {
    all.liveBytes -= entry.mapped().bytes;
    all.table.Spare(std::move(entry));
  }
  lock.unlock();
  if (!isLive) AbortOnMisuse("KernelFree", "not a live block", block, line, file);
  std::free(block);
}
