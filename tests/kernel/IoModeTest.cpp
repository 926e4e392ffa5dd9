#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "Tarnbase/PlainKernel.h"

namespace tarn::test {
namespace {

TEST(IoMode, IsTheTempFileRouteToBeginWith) { EXPECT_EQ(KernelIoModeGet(), 0); }

TEST(IoMode, EnteringAndLeavingAScopeRestoresTheMode) {
  PlainKernelSetIoMode(7);
  std::array<char, 120> scope;
  ASSERT_EQ(KernelIoModeFill(scope.data(), 120, KERNEL_IO_IN_MEMORY, 0), 1);
  EXPECT_EQ(KernelIoModeGet(), 7);
  KernelIoModeSwap(scope.data(), 0, 0);
  EXPECT_EQ(KernelIoModeGet(), KERNEL_IO_IN_MEMORY);
  KernelIoModeSwap(scope.data(), 0, 0);
  EXPECT_EQ(KernelIoModeGet(), 7);
  KernelIoModeSwap(scope.data(), 0, 0);
  EXPECT_EQ(KernelIoModeGet(), KERNEL_IO_IN_MEMORY);
}

TEST(IoMode, ScopesNest) {
  std::array<char, 120> outer;
  std::array<char, 120> inner;
  ASSERT_EQ(KernelIoModeFill(outer.data(), 120, 3, 0), 1);
  ASSERT_EQ(KernelIoModeFill(inner.data(), 120, 4, 0), 1);
  KernelIoModeSwap(outer.data(), 0, 0);
  KernelIoModeSwap(inner.data(), 0, 0);
  EXPECT_EQ(KernelIoModeGet(), 4);
  KernelIoModeSwap(inner.data(), 0, 0);
  EXPECT_EQ(KernelIoModeGet(), 3);
  KernelIoModeSwap(outer.data(), 0, 0);
  EXPECT_EQ(KernelIoModeGet(), 0);
}

TEST(IoMode, AScopeIs120BytesOfAnyAlignment) {
  std::array<char, 123> memory;
  memory.fill('#');
  ASSERT_EQ(KernelIoModeFill(memory.data() + 1, 120, 3, 0), 1);
  KernelIoModeSwap(memory.data() + 1, 0, 0);
  EXPECT_EQ(KernelIoModeGet(), 3);
  KernelIoModeSwap(memory.data() + 1, 0, 0);
  EXPECT_EQ(memory[0], '#');
  EXPECT_EQ(memory[121], '#');
  EXPECT_EQ(memory[122], '#');
}

TEST(IoMode, RefusesOtherSizesAndNoScope) {
  std::array<char, 240> scope;
  scope.fill('#');
  for (const int32_t size : {-120, 0, 119, 121, 240}) {
    EXPECT_EQ(KernelIoModeFill(scope.data(), size, 3, 0), -13) << size;
  }
  EXPECT_TRUE(std::all_of(scope.begin(), scope.end(), [](char byte) { return byte == '#'; }));
  EXPECT_EQ(KernelIoModeFill(nullptr, 120, 3, 0), -13);
  KernelIoModeSwap(nullptr, 0, 0);
  EXPECT_EQ(KernelIoModeGet(), 0);
}

}  // namespace
}  // namespace tarn::test
