#include <gtest/gtest.h>

#include "archive/export/PlanAttempts.h"
#include "archive/export/StillTime.h"

namespace tarn::archive {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

TEST(StillTimeTest, BeginsAnewWithEachBeat) {
  StillTime still;
  const StillTime::Clock::time_point start{};
  still.begin(start);
  still.look(start + milliseconds(200), 0);
  still.look(start + milliseconds(400), 0);
  EXPECT_EQ(still.time(), milliseconds(400));
  still.look(start + milliseconds(600), 1);
  EXPECT_EQ(still.time(), milliseconds(0));
  still.look(start + milliseconds(700), 1);
  EXPECT_EQ(still.time(), milliseconds(100));
}

TEST(StillTimeTest, CountsLittleOfATimeInWhichNobodyLooked) {
  StillTime still;
  const StillTime::Clock::time_point start{};
  still.begin(start);
  still.look(start + milliseconds(200), 0);
  still.look(start + seconds(3600), 0);
  EXPECT_EQ(still.time(), milliseconds(200) + StillTime::kMostOfALook);
}

TEST(PlanAttemptsTest, TriesAllAgainAfterOneDeath) {
  PlanAttempts attempts;
  EXPECT_TRUE(attempts.died(1000, "ended"));
  EXPECT_EQ(attempts.limits().entries, UINT64_MAX);
  EXPECT_TRUE(attempts.limits().passedOver.empty());
  EXPECT_EQ(attempts.limits().reasonAfter, "");
}

TEST(PlanAttemptsTest, PassesOverAnEntryThatIsTheDeathTwice) {
  PlanAttempts attempts;
  EXPECT_TRUE(attempts.died(1000, "ended"));
  EXPECT_TRUE(attempts.died(1000, "ended"));
  EXPECT_EQ(attempts.limits().passedOver.at(1000), "ended");
  EXPECT_EQ(attempts.limits().entries, UINT64_MAX);
  // Another one later.
  EXPECT_TRUE(attempts.died(2000, "ended"));
  EXPECT_TRUE(attempts.died(2000, "ended"));
  EXPECT_EQ(attempts.limits().passedOver.size(), 2u);
  EXPECT_EQ(attempts.limits().entries, UINT64_MAX);
}

TEST(PlanAttemptsTest, EndsBeforeWhatCannotBePassedOver) {
  PlanAttempts attempts;
  for (int death = 0; death < 3; ++death) EXPECT_TRUE(attempts.died(7, "ended"));
  EXPECT_EQ(attempts.limits().entries, 7u);
  EXPECT_EQ(attempts.limits().reasonAfter, "what comes after cannot be read: ended");
  EXPECT_FALSE(attempts.died(7, "ended"));
}

TEST(PlanAttemptsTest, LeavesASourceThatCannotBeAddedUp) {
  PlanAttempts attempts;
  EXPECT_TRUE(attempts.died(std::nullopt, "ended"));
  EXPECT_TRUE(attempts.died(std::nullopt, "ended"));
  EXPECT_FALSE(attempts.died(std::nullopt, "ended"));
}

TEST(PlanAttemptsTest, Ends) {
  PlanAttempts attempts;
  uint64_t deaths = 0;
  while (attempts.died(deaths, "ended")) ASSERT_LT(++deaths, 100u);
}

}  // namespace
}  // namespace tarn::archive
