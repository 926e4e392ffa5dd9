// BlockLedger.h - every kernel block that the filter holds, as the fuzz targets count them.
//
// The program's own KernelAlloc, KernelAllocZero, KernelRealloc and KernelFree come before those of
// the kernel library, note the block, and call them. So a target can name the blocks that a call
// left, which the kernel's usage record only counts, and can bound the memory of one call.
#ifndef TARN_FUZZ_HOST_BLOCKLEDGER_H
#define TARN_FUZZ_HOST_BLOCKLEDGER_H

#include <cstdint>
#include <functional>
#include <vector>

namespace tarn::fuzz {

struct LedgerBlock {
  void* block;
  uint64_t bytes;
  int32_t line;  // of the allocation, as it was passed
  const char16_t* file;
};

// Called with a block that is about to be freed, its contents still whole.
using FreeWatcher = std::function<void(const void* block, uint64_t bytes)>;

// What happens to the kernel's blocks between construction and destruction. One at a time.
class BlockWatch {
 public:
  explicit BlockWatch(FreeWatcher onFree = nullptr);
  BlockWatch(const BlockWatch&) = delete;
  BlockWatch& operator=(const BlockWatch&) = delete;
  ~BlockWatch();

  // Blocks that were allocated since construction, or resized, and are still there.
  std::vector<LedgerBlock> left() const;
  // The most bytes in live blocks at any time since construction, beyond those that lived before.
  uint64_t peakBytes() const;

 private:
  uint64_t first_;
  uint64_t bytesBefore_;
};

}  // namespace tarn::fuzz

#endif
