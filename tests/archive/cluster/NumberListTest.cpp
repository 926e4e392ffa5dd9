#include "archive/cluster/NumberList.h"

#include <gtest/gtest.h>

namespace tarn::archive {
namespace {

using Numbers = std::vector<uint64_t>;

TEST(NumberList, WritesNumbersAsEnginesTakeThem) {
  EXPECT_EQ(NumberList({}), "");
  EXPECT_EQ(NumberList({0}), "0");
  EXPECT_EQ(NumberList({3, 7, 8, 9}), "3,7-9");
  EXPECT_EQ(NumberList({0, 1, 3}), "0-1,3");
}

TEST(NumberList, ReadsWhatItWrites) {
  EXPECT_EQ(NumbersOf("", 9), Numbers{});
  EXPECT_EQ(NumbersOf("3,7-9", 9), (Numbers{3, 7, 8, 9}));
  EXPECT_EQ(NumbersOf("0-1,18446744073709551615", 18446744073709551615u),
            (Numbers{0, 1, 18446744073709551615u}));
}

TEST(NumberList, StopsAtWhatIsNoList) {
  EXPECT_EQ(NumbersOf("3,x", 9), (Numbers{3}));
  EXPECT_EQ(NumbersOf("5-2", 9), Numbers{});
  EXPECT_EQ(NumbersOf("-1", 9), Numbers{});
  EXPECT_EQ(NumbersOf("3,7-10", 9), (Numbers{3}));
  EXPECT_EQ(NumbersOf("0-18446744073709551615", 9), Numbers{});
  EXPECT_EQ(NumbersOf("3-5,4-6", 9), (Numbers{3, 4, 5}));
}

}  // namespace
}  // namespace tarn::archive
