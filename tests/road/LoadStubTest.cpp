// The loader's stub, with a double of the kernel's half that takes down what it is given.

#include <gtest/gtest.h>

#include <cstdint>

#include "TarnPst.h"
#include "Tarnbase/Kernel.h"

namespace {

struct LoaderCall {
  void* caller;
  uint64_t a, b, c;
};

LoaderCall g_call = {};
int64_t g_answer = 0;

}  // namespace

extern "C" {

int64_t __wrap_KernelLoaderEntry(void* caller, uint64_t a, uint64_t b, uint64_t c) {
  g_call = {caller, a, b, c};
  return g_answer;
}

}  // extern "C"

namespace tarn {
namespace {

TEST(LoadStub, HandsItsOwnAddressAndTheOtherThreeArgumentsOn) {
  g_answer = INT64_MIN + 5;
  EXPECT_EQ(TARN_Load(1, 0xFEDCBA9876543210u, 3, UINT64_MAX), INT64_MIN + 5);
  EXPECT_EQ(g_call.caller, reinterpret_cast<void*>(&TARN_Load));
  EXPECT_EQ(g_call.a, 0xFEDCBA9876543210u);
  EXPECT_EQ(g_call.b, 3u);
  EXPECT_EQ(g_call.c, UINT64_MAX);
}

}  // namespace
}  // namespace tarn
