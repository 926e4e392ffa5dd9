// Each module has a runtime of its own, linked into it: the throw counts in the filter's, the catch
// in the host's. Nothing in the filter, the kernel or tarnmail asks for the count.

#include "road/ExceptionCount.h"

namespace tarn::test {
namespace {

TEST(ExceptionCount, IsThatOfEachModule) {
  EXPECT_EQ(UncaughtAfter(0), 0);
  EXPECT_EQ(UncaughtAfter(5), -5);
}

}  // namespace
}  // namespace tarn::test
