#include "FileFormats/Pst/IoScope.h"

#include <gtest/gtest.h>

#include "Tarnbase/PlainKernel.h"

namespace tarn {
namespace {

TEST(FilterIoScope, HoldsModeThreeUntilItIsLeft) {
  PlainKernelSetIoMode(1);
  FilterIoScope scope;
  EXPECT_EQ(KernelIoModeGet(), 1);
  scope.enter();
  EXPECT_EQ(KernelIoModeGet(), 3);
  scope.enter();  // already inside
  EXPECT_EQ(KernelIoModeGet(), 3);
  scope.leave();
  EXPECT_EQ(KernelIoModeGet(), 1);
  scope.leave();
  EXPECT_EQ(KernelIoModeGet(), 1);
}

TEST(FilterIoScope, IsLeftOnEveryWayOut) {
  PlainKernelSetIoMode(2);
  {
    FilterIoScope scope;
    scope.enter();
    EXPECT_EQ(KernelIoModeGet(), 3);
  }
  EXPECT_EQ(KernelIoModeGet(), 2);
}

}  // namespace
}  // namespace tarn
