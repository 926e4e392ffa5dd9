// Memory.h - what the kernel's other parts ask of its blocks.
#ifndef TARN_KERNEL_MEMORY_H
#define TARN_KERNEL_MEMORY_H

#include "Tarnbase/PlainKernel.h"

namespace tarn::kernel {

// Whether the block is live and holds at least `bytes`.
bool IsLiveBlock(const void* block, uint64_t bytes);

// Fills in the fields about blocks and allocation calls.
void ReportBlocks(PlainKernelUsageRecord& usage);

// Writes a line about each live block to standard error. False when somebody holds the lock, and
// then none.
bool ListBlocks();

}  // namespace tarn::kernel

#endif
