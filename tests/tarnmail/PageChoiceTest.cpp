// Pages as the command line names them.

#include "tarnmail/PageChoice.h"

#include <gtest/gtest.h>

namespace tarn::host {
namespace {

void ExpectPages(const char* text, int32_t first, int32_t last) {
  const std::optional<PageChoice> choice = ParsePages(text);
  ASSERT_TRUE(choice) << text;
  EXPECT_EQ(choice->first, first) << text;
  EXPECT_EQ(choice->last, last) << text;
}

TEST(ParsePages, TakesAPageOrARange) {
  ExpectPages("2", 2, 2);
  ExpectPages("1-3", 1, 3);
  ExpectPages("3-3", 3, 3);
  ExpectPages("3-", 3, 0);
  ExpectPages("1-2147483647", 1, INT32_MAX);
}

TEST(ParsePages, RefusesAnyOtherText) {
  for (const char* text : {"", "-", "-3", "0", "0-2", "3-2", "1-0", "1--3", "a", "1-b", "1,2",
                           "1-2-3", " 1", "1 ", "2147483648", "1-2147483648"}) {
    EXPECT_FALSE(ParsePages(text)) << text;
  }
}

}  // namespace
}  // namespace tarn::host
