#include "siblings/client/TimeBudget.h"

#include <gtest/gtest.h>

namespace tarn::pages {
namespace {

using std::chrono::seconds;

TEST(TimeBudget, GrowsWithEachPageThatIsAskedFor) {
  TimeBudget budget(seconds(60));
  EXPECT_EQ(budget.left(), seconds(60));
  budget.ask(1);
  EXPECT_EQ(budget.left(), seconds(61));
  budget.spend(seconds(50));
  budget.ask(9);
  EXPECT_EQ(budget.left(), seconds(20));
  EXPECT_EQ(budget.total(), seconds(70));
  budget.spend(seconds(21));
  EXPECT_EQ(budget.left(), seconds(-1));
}

TEST(TimeBudget, HoldsForTheLargestDocument) {
  TimeBudget budget(seconds(60));
  budget.ask(1'000'000);
  EXPECT_EQ(budget.total(), seconds(1'000'060));
}

}  // namespace
}  // namespace tarn::pages
