#include "Faults.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>

namespace tarn::kernel {
namespace {

constexpr size_t kGroups = 8;  // slot 0 is nobody's

// Calls until the failing one, that one included; 0 when none is to fail. With the mark, the calls
// after that one fail too. No process makes as many calls as would reach the mark.
constinit std::array<std::atomic<uint64_t>, kGroups> callsToGo{};
constexpr uint64_t kAndAllAfter = uint64_t{1} << 63;

void SetFault(int32_t group, uint64_t ordinal, uint64_t mark) {
  if (group < PlainKernelFaultMemory || group > PlainKernelFaultBudget) return;
  const uint64_t calls = std::min(ordinal, kAndAllAfter - 1);
  callsToGo[static_cast<size_t>(group)].store(calls == 0 ? 0 : calls | mark,
                                              std::memory_order_relaxed);
}

}  // namespace

bool FaultDue(PlainKernelFaultGroup group) noexcept {
  std::atomic<uint64_t>& toGo = callsToGo[static_cast<size_t>(group)];
  uint64_t left = toGo.load(std::memory_order_relaxed);
  while (left != 0) {
    if (left == (1 | kAndAllAfter)) return true;
    if (toGo.compare_exchange_weak(left, left - 1, std::memory_order_relaxed)) return left == 1;
  }
  return false;
}

}  // namespace tarn::kernel

void PlainKernelFailAt(int32_t group, uint64_t ordinal) {
  tarn::kernel::SetFault(group, ordinal, 0);
}

void PlainKernelFailFrom(int32_t group, uint64_t ordinal) {
  tarn::kernel::SetFault(group, ordinal, tarn::kernel::kAndAllAfter);
}
