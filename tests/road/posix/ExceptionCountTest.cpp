// One runtime, shared by all modules, counts every throw and every catch.

#include "road/ExceptionCount.h"

namespace tarn::test {
namespace {

TEST(ExceptionCount, IsThatOfAllModules) {
  EXPECT_EQ(UncaughtAfter(0), 0);
  EXPECT_EQ(UncaughtAfter(5), 0);
}

}  // namespace
}  // namespace tarn::test
