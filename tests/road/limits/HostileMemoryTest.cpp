// What hostile shapes cost in the filter, by the kernel's own counts: no call takes more memory
// than 192 MiB and 32 times its file, and twice as much of anything asks for blocks at most about
// twice as often and holds at most about twice as much.
#include <gtest/gtest.h>

#include <algorithm>

#include "HostileInput.h"
#include "support/KernelUsage.h"
#include "support/PeakMemory.h"

namespace tarn::test {
namespace {

constexpr uint64_t kMebibyte = uint64_t{1} << 20;

struct Cost {
  uint64_t file = 0;
  uint64_t peak = 0;
  uint64_t allocations = 0;
};

class HostileCost : public HostileCalls {
 protected:
  Cost costOf(size_t count) {
    const std::filesystem::path file = write(count);
    Cost cost;
    cost.file = std::filesystem::file_size(file);
    const uint64_t before = AllocationCalls();
    cost.peak = PeakOf([&] { makeCalls(file); });
    cost.allocations = AllocationCalls() - before;
    return cost;
  }
};

TEST_P(HostileCost, GrowsWithTheFileAtMost) {
  const Cost one = costOf(GetParam().shape->count / TARN_TEST_SHARE / 2);
  const Cost two = costOf(GetParam().shape->count / TARN_TEST_SHARE);
  for (const Cost& cost : {one, two}) EXPECT_LE(cost.peak, 192 * kMebibyte + 32 * cost.file);
  // Blocks that double may be full in one and nearly empty in the other.
  EXPECT_LE(two.peak, 4 * one.peak + kMebibyte);
  EXPECT_LE(two.allocations, one.allocations * 5 / 2 + 200);
  EXPECT_GT(answers_, 20);
}

INSTANTIATE_TEST_SUITE_P(Hostile, HostileCost, ::testing::ValuesIn(HostileInputs()), NameOfInput);

}  // namespace
}  // namespace tarn::test
