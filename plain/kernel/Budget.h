// Budget.h - how many bytes callers of KernelMemoryReport may hold, and hold.
#ifndef TARN_KERNEL_BUDGET_H
#define TARN_KERNEL_BUDGET_H

#include <cstdint>

namespace tarn::kernel {

// Bytes reported and not given back.
uint64_t ReportedBytes();

}  // namespace tarn::kernel

#endif
