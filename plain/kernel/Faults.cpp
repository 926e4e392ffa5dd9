#include "Faults.h"

#include <array>
#include <atomic>
#include <cstddef>

namespace tarn::kernel {
namespace {

constexpr size_t kGroups = 8;  // slot 0 is nobody's

// Calls until the failing one, that one included; 0 when none is to fail.
constinit std::array<std::atomic<uint64_t>, kGroups> callsToGo{};

}  // namespace

bool FaultDue(PlainKernelFaultGroup group) noexcept {
  std::atomic<uint64_t>& toGo = callsToGo[static_cast<size_t>(group)];
  uint64_t left = toGo.load(std::memory_order_relaxed);
  while (left != 0) {
    if (toGo.compare_exchange_weak(left, left - 1, std::memory_order_relaxed)) return left == 1;
  }
  return false;
}

}  // namespace tarn::kernel

void PlainKernelFailAt(int32_t group, uint64_t ordinal) {
  using tarn::kernel::callsToGo;
  if (group < PlainKernelFaultMemory || group > PlainKernelFaultBudget) return;
  callsToGo[static_cast<size_t>(group)].store(ordinal, std::memory_order_relaxed);
}
