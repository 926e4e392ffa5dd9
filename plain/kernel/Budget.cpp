#include "Budget.h"

#include <algorithm>
#include <mutex>

#include "Faults.h"
#include "Lock.h"
#include "TarnPst.h"
#include "Tarnbase/PlainKernel.h"

namespace tarn::kernel {
namespace {

constinit Lock budgetMutex;
uint64_t budgetBytes = UINT64_MAX;
uint64_t reportedBytes = 0;

TarnStatus Want(uint64_t bytes) {
  if (FaultDue(PlainKernelFaultBudget)) return StatusOutOfMemory;
  const std::lock_guard lock(budgetMutex);
  // A budget lowered below what is held already leaves no room at all.
  const uint64_t room = budgetBytes - std::min(budgetBytes, reportedBytes);
  if (bytes > room) return StatusOutOfMemory;
  reportedBytes += bytes;
  return StatusOk;
}

TarnStatus Return(uint64_t bytes) {
  const std::lock_guard lock(budgetMutex);
  reportedBytes -= std::min(bytes, reportedBytes);
  return StatusOk;
}

}  // namespace

uint64_t ReportedBytes() {
  const std::lock_guard lock(budgetMutex);
  return reportedBytes;
}

}  // namespace tarn::kernel

using namespace tarn::kernel;

int32_t KernelMemoryReport(int32_t action, uint64_t bytes, int32_t /*reserved*/) {
  switch (action) {
    case KERNEL_MEMORY_WANT:
      return Want(bytes);
    case KERNEL_MEMORY_RETURN:
      return Return(bytes);
    case KERNEL_MEMORY_FAILED:
      return StatusOutOfMemory;
    default:
      return StatusBadArgument;
  }
}

void PlainKernelSetMemoryBudget(uint64_t bytes) {
  const std::lock_guard lock(budgetMutex);
  budgetBytes = bytes;
}
