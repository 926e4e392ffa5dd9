// The four memory operations on the ordinary heap.
//
// Every live block stands in a table beside the heap, not in a header in front of the block: a
// pointer that is not a live block is then told apart without reading the memory around it.
#include "Memory.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <mutex>

#include "AddressTable.h"
#include "Faults.h"
#include "Lock.h"
#include "Report.h"
#include "Tarnbase/Kernel.h"

namespace tarn::kernel {
namespace {

// Larger requests fail without asking the heap, some of which end the process over them.
constexpr uint64_t kLargestBlock = uint64_t{1} << 39;

struct BlockRecord {
  uint64_t bytes;
  const char16_t* file;
  int32_t line;
};

struct Blocks {
  Lock mutex;
  AddressTable<BlockRecord> table;
  uint64_t liveBytes = 0;
  uint64_t peakBytes = 0;

  void Count(uint64_t bytes) {
    liveBytes += bytes;
    peakBytes = std::max(peakBytes, liveBytes);
  }
};

constinit Blocks blocks;
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

void* NewBlock(uint64_t bytes, bool zeroFill, int32_t line, const char16_t* file) {
  void* const block = HeapAllocate(bytes, zeroFill);
  if (block == nullptr) return nullptr;
  {
    const std::lock_guard lock(blocks.mutex);
    if (blocks.table.Insert(block, BlockRecord{bytes, file, line})) {
      blocks.Count(bytes);
      return block;
    }
  }
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
  const std::lock_guard lock(blocks.mutex);
  const BlockRecord* const record = blocks.table.Find(block);
  return record != nullptr && record->bytes >= bytes;
}

void ReportBlocks(PlainKernelUsageRecord& usage) {
  const std::lock_guard lock(blocks.mutex);
  usage.liveBlocks = blocks.table.size();
  usage.liveBytes = blocks.liveBytes;
  usage.peakBytes = blocks.peakBytes;
  usage.allocationCalls = allocationCalls.load(std::memory_order_relaxed);
}

bool ListBlocks() {
  const std::unique_lock lock(blocks.mutex, std::try_to_lock);
  if (!lock) return false;
  blocks.table.ForEach([](const void* block, const BlockRecord& record) {
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

  // The lock stays held while the heap moves the block: the old address may be given out again at
  // once, and must not be in the table then.
  std::unique_lock lock(blocks.mutex);
  BlockRecord old = {};
  if (!blocks.table.Take(block, old)) {
    lock.unlock();
    AbortOnMisuse("KernelRealloc", "not a live block", block, line, file);
  }
  const bool refused = fault || bytes > kLargestBlock;
  void* const moved =
      refused ? nullptr : std::realloc(block, static_cast<size_t>(std::max<uint64_t>(bytes, 1)));
  // Both take the place just freed in the table, so neither can fail.
  if (moved == nullptr) {
    blocks.table.Insert(block, old);
    return nullptr;
  }
  blocks.table.Insert(moved, BlockRecord{bytes, file, line});
  blocks.liveBytes -= old.bytes;
  blocks.Count(bytes);
  return moved;
}

void KernelFree(void* block, int32_t line, const char16_t* file) {
  bool live = false;
  {
    const std::lock_guard lock(blocks.mutex);
    BlockRecord record = {};
    live = blocks.table.Take(block, record);
    if (live) blocks.liveBytes -= record.bytes;
  }
  if (!live) AbortOnMisuse("KernelFree", "not a live block", block, line, file);
  std::free(block);
}
