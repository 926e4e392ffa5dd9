#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <thread>

#include "TarnPst.h"
#include "Tarnbase/PlainKernel.h"

namespace tarn::test {
namespace {

TEST(IoMode, IsTheTempFileRouteToBeginWith) { EXPECT_EQ(KernelIoModeGet(), 0); }

TEST(IoMode, EnteringAndLeavingAScopeRestoresTheMode) {
  PlainKernelSetIoMode(7);
  std::array<char, 120> scope;
  ASSERT_EQ(KernelIoModeFill(scope.data(), 120, KERNEL_IO_IN_MEMORY, 0), StatusOk);
  EXPECT_EQ(KernelIoModeGet(), 7);
  KernelIoModeSwap(scope.data(), 0, 0);
  EXPECT_EQ(KernelIoModeGet(), KERNEL_IO_IN_MEMORY);
  KernelIoModeSwap(scope.data(), 0, 0);
  EXPECT_EQ(KernelIoModeGet(), 7);
  KernelIoModeSwap(scope.data(), 0, 0);
  EXPECT_EQ(KernelIoModeGet(), KERNEL_IO_IN_MEMORY);
  KernelIoModeSwap(scope.data(), 0, 0);
  EXPECT_EQ(KernelIoModeGet(), 7);
}

TEST(IoMode, ScopesNest) {
  std::array<char, 120> outer;
  std::array<char, 120> inner;
  ASSERT_EQ(KernelIoModeFill(outer.data(), 120, 3, 0), StatusOk);
  ASSERT_EQ(KernelIoModeFill(inner.data(), 120, 4, 0), StatusOk);
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
  ASSERT_EQ(KernelIoModeFill(memory.data() + 1, 120, 3, 0), StatusOk);
  KernelIoModeSwap(memory.data() + 1, 0, 0);
  EXPECT_EQ(KernelIoModeGet(), 3);
  KernelIoModeSwap(memory.data() + 1, 0, 0);
  EXPECT_EQ(KernelIoModeGet(), 0);
  EXPECT_EQ(memory[0], '#');
  EXPECT_EQ(memory[121], '#');
  EXPECT_EQ(memory[122], '#');
}

TEST(IoMode, RefusesOtherSizesAndNoScope) {
  std::array<char, 240> scope;
  scope.fill('#');
  for (const int32_t size : {-120, 0, 119, 121, 240}) {
    EXPECT_EQ(KernelIoModeFill(scope.data(), size, 3, 0), StatusBadArgument) << size;
  }
  EXPECT_TRUE(std::all_of(scope.begin(), scope.end(), [](char byte) { return byte == '#'; }));
  EXPECT_EQ(KernelIoModeFill(nullptr, 120, 3, 0), StatusBadArgument);
  KernelIoModeSwap(nullptr, 0, 0);
  EXPECT_EQ(KernelIoModeGet(), 0);
}

// What a new thread's mode is.
int32_t ModeOfANewThread() {
  int32_t mode = -1;
  std::thread([&mode] { mode = KernelIoModeGet(); }).join();
  return mode;
}

TEST(IoMode, AScopeIsItsThreadsAlone) {
  PlainKernelSetIoMode(7);
  std::array<char, 120> scope;
  ASSERT_EQ(KernelIoModeFill(scope.data(), 120, 3, 0), StatusOk);
  std::atomic<int> step{0};
  int32_t before = -1;
  int32_t during = -1;
  int32_t after = -1;
  std::thread other([&] {
    before = KernelIoModeGet();
    step = 1;
    while (step != 2) std::this_thread::yield();
    during = KernelIoModeGet();
    step = 3;
    while (step != 4) std::this_thread::yield();
    after = KernelIoModeGet();
  });
  while (step != 1) std::this_thread::yield();
  KernelIoModeSwap(scope.data(), 0, 0);
  EXPECT_EQ(KernelIoModeGet(), 3);
  EXPECT_EQ(ModeOfANewThread(), 7);
  step = 2;
  while (step != 3) std::this_thread::yield();
  KernelIoModeSwap(scope.data(), 0, 0);
  EXPECT_EQ(KernelIoModeGet(), 7);
  step = 4;
  other.join();
  EXPECT_EQ(before, 7);
  EXPECT_EQ(during, 7);
  EXPECT_EQ(after, 7);
}

TEST(IoMode, AThreadWithoutAScopeTakesOnTheModeOfTheProcess) {
  std::atomic<int> step{0};
  int32_t before = -1;
  int32_t after = -1;
  std::thread other([&] {
    before = KernelIoModeGet();
    step = 1;
    while (step != 2) std::this_thread::yield();
    after = KernelIoModeGet();
  });
  while (step != 1) std::this_thread::yield();
  PlainKernelSetIoMode(3);
  step = 2;
  other.join();
  EXPECT_EQ(before, 0);
  EXPECT_EQ(after, 3);
}

// The scope holds until it is left; then the thread has the mode that the process has by then.
TEST(IoMode, AnOpenScopeOutlastsASetting) {
  std::array<char, 120> outer;
  std::array<char, 120> inner;
  ASSERT_EQ(KernelIoModeFill(outer.data(), 120, 3, 0), StatusOk);
  ASSERT_EQ(KernelIoModeFill(inner.data(), 120, 4, 0), StatusOk);
  KernelIoModeSwap(outer.data(), 0, 0);
  KernelIoModeSwap(inner.data(), 0, 0);
  PlainKernelSetIoMode(9);
  EXPECT_EQ(KernelIoModeGet(), 4);
  EXPECT_EQ(ModeOfANewThread(), 9);
  KernelIoModeSwap(inner.data(), 0, 0);
  EXPECT_EQ(KernelIoModeGet(), 3);
  KernelIoModeSwap(outer.data(), 0, 0);
  EXPECT_EQ(KernelIoModeGet(), 9);
}

// Left where it was not entered, a scope changes nothing there.
TEST(IoMode, AScopeOfAnotherThreadDoesNotBreakTheMode) {
  PlainKernelSetIoMode(7);
  std::array<char, 120> scope;
  ASSERT_EQ(KernelIoModeFill(scope.data(), 120, 3, 0), StatusOk);
  std::thread([&scope] { KernelIoModeSwap(scope.data(), 0, 0); }).join();
  KernelIoModeSwap(scope.data(), 0, 0);
  EXPECT_EQ(KernelIoModeGet(), 7);
  PlainKernelSetIoMode(5);
  EXPECT_EQ(KernelIoModeGet(), 5);
}

}  // namespace
}  // namespace tarn::test
