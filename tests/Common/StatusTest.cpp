#include "Internal/Status.h"

#include <gtest/gtest.h>

#include <sstream>
#include <type_traits>

namespace tarn {
namespace {

TEST(Status, IsOkFromTheStart) {
  EXPECT_EQ(Status(), StatusOk);
  EXPECT_TRUE(Status().ok());
  EXPECT_FALSE(Status().failed());
  EXPECT_EQ(Status().code(), 1);
}

TEST(Status, DoneIsNeitherSuccessNorFailure) {
  const Status done = StatusDone;
  EXPECT_FALSE(done.ok());
  EXPECT_FALSE(done.failed());
}

TEST(Status, ZeroAndNegativeCodesAreFailures) {
  for (const Status status : {Status(StatusFailed), Status(StatusOutOfMemory)}) {
    EXPECT_TRUE(status.failed());
    EXPECT_FALSE(status.ok());
  }
}

// A host may refuse with a code that the filter has no name for.
TEST(Status, KeepsCodesOfTheHost) {
  EXPECT_EQ(Status::FromCode(-4711).code(), -4711);
  EXPECT_EQ(Status::FromCode(-1), StatusOutOfMemory);
  EXPECT_NE(Status::FromCode(-4711), StatusFailed);
}

TEST(Status, IsNoNumberUnasked) {
  static_assert(!std::is_convertible_v<Status, int32_t>);
  static_assert(!std::is_convertible_v<int32_t, Status>);
  static_assert(!std::is_convertible_v<Status, bool>);
  static_assert(sizeof(Status) == sizeof(int32_t));
}

TEST(Status, TellsItsNumberAndItsMeaning) {
  std::ostringstream text;
  text << Status(StatusOk);
  EXPECT_EQ(text.str(), "1 (success)");
}

}  // namespace
}  // namespace tarn
