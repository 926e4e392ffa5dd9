// MemoryFiles.h - how many memory files have not been ended.
#ifndef TARN_KERNEL_MEMORYFILES_H
#define TARN_KERNEL_MEMORYFILES_H

#include <cstdint>

namespace tarn::kernel {

// Memory files whose state is still alive although their handle was closed: those that LiveHandles
// does not count.
uint64_t UnendedMemoryFiles() noexcept;

}  // namespace tarn::kernel

#endif
