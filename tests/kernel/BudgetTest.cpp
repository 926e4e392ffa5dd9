#include <gtest/gtest.h>

#include "Scratch.h"
#include "TarnPst.h"
#include "Tarnbase/PlainKernel.h"

namespace tarn::test {
namespace {

int32_t Want(uint64_t bytes) { return KernelMemoryReport(KERNEL_MEMORY_WANT, bytes, 0); }
int32_t Return(uint64_t bytes) { return KernelMemoryReport(KERNEL_MEMORY_RETURN, bytes, 0); }

TEST(Budget, HasNoLimitToBeginWith) {
  EXPECT_EQ(Want(UINT64_MAX), StatusOk);
  EXPECT_EQ(Usage().reportedBytes, UINT64_MAX);
  EXPECT_EQ(Return(UINT64_MAX), StatusOk);
  EXPECT_EQ(Usage().reportedBytes, 0U);
}

TEST(Budget, GrantsUpToTheLimitAndRefusesBeyond) {
  PlainKernelSetMemoryBudget(100);
  EXPECT_EQ(Want(60), StatusOk);
  EXPECT_EQ(Want(41), StatusOutOfMemory);
  EXPECT_EQ(Usage().reportedBytes, 60U);
  EXPECT_EQ(Want(40), StatusOk);
  EXPECT_EQ(Want(1), StatusOutOfMemory);
  EXPECT_EQ(Want(0), StatusOk);
  EXPECT_EQ(Want(UINT64_MAX), StatusOutOfMemory);
  Return(1);
  EXPECT_EQ(Want(1), StatusOk);
  Return(100);
  EXPECT_EQ(Usage().reportedBytes, 0U);
}

TEST(Budget, SumsThatOverflowAreRefusedEvenWithoutALimit) {
  EXPECT_EQ(Want(2), StatusOk);
  EXPECT_EQ(Want(UINT64_MAX - 1), StatusOutOfMemory);
  EXPECT_EQ(Usage().reportedBytes, 2U);
  Return(2);
}

TEST(Budget, LoweredBelowWhatIsHeldRefusesAll) {
  EXPECT_EQ(Want(10), StatusOk);
  PlainKernelSetMemoryBudget(5);
  EXPECT_EQ(Want(1), StatusOutOfMemory);
  Return(10);
  EXPECT_EQ(Want(5), StatusOk);
  Return(5);
}

TEST(Budget, GivesBackNoMoreThanIsHeld) {
  EXPECT_EQ(Want(3), StatusOk);
  Return(4);
  EXPECT_EQ(Usage().reportedBytes, 0U);
}

TEST(Budget, AFailedAllocationIsOutOfMemory) {
  EXPECT_EQ(KernelMemoryReport(KERNEL_MEMORY_FAILED, 123, 0), StatusOutOfMemory);
  EXPECT_EQ(Usage().reportedBytes, 0U);
}

TEST(Budget, UnknownActionsDoNothing) {
  for (const int32_t action : {-1, 0, 1, 4, 6}) {
    EXPECT_NE(KernelMemoryReport(action, 7, 0), 1);
  }
  EXPECT_EQ(Usage().reportedBytes, 0U);
}

}  // namespace
}  // namespace tarn::test
