#include "archive/cluster/NumberList.h"

#include <gtest/gtest.h>

namespace tarn::archive {
namespace {

using Numbers = std::vector<uint64_t>;

TEST(NumberList, WritesNumbersAsEnginesTakeThem) {
  EXPECT_EQ(NumberList(Numbers{}), "");
  EXPECT_EQ(NumberList(Numbers{0}), "0");
  EXPECT_EQ(NumberList(Numbers{3, 7, 8, 9}), "3,7-9");
  EXPECT_EQ(NumberList(Numbers{0, 1, 3}), "0-1,3");
}

TEST(NumberList, ReadsWhatItWrites) {
  EXPECT_EQ(SpansOf("", 9), NumberSpans{});
  EXPECT_EQ(SpansOf("3,7-9", 9), (NumberSpans{{3, 3}, {7, 9}}));
  EXPECT_EQ(SpansOf("0-1,18446744073709551615", 18446744073709551615u),
            (NumberSpans{{0, 1}, {18446744073709551615u, 18446744073709551615u}}));
}

TEST(NumberList, StopsAtWhatIsNoList) {
  EXPECT_EQ(SpansOf("3,x", 9), (NumberSpans{{3, 3}}));
  EXPECT_EQ(SpansOf("5-2", 9), NumberSpans{});
  EXPECT_EQ(SpansOf("-1", 9), NumberSpans{});
  EXPECT_EQ(SpansOf("3,7-10", 9), (NumberSpans{{3, 3}}));
  EXPECT_EQ(SpansOf("0-18446744073709551615", 9), NumberSpans{});
  EXPECT_EQ(SpansOf("3-5,4-6", 9), (NumberSpans{{3, 5}}));
}

TEST(NumberSpans, HasTheNumbersOfItsSpans) {
  NumberSpans spans;
  for (const uint64_t number : {2u, 3u, 4u, 9u}) AddNumber(spans, number);
  EXPECT_EQ(spans, (NumberSpans{{2, 4}, {9, 9}}));
  Numbers numbers;
  for (uint64_t number = 0; number < 12; ++number) {
    if (HasNumber(spans, number)) numbers.push_back(number);
  }
  EXPECT_EQ(numbers, (Numbers{2, 3, 4, 9}));
  EXPECT_FALSE(HasNumber({}, 0));
}

}  // namespace
}  // namespace tarn::archive
