#include "Common/FixedText.h"

#include <gtest/gtest.h>

#include <cstring>

namespace tarn {
namespace {

TEST(FixedText, IsEmptyAtFirst) {
  const FixedText<3> text;
  EXPECT_EQ(text.view(), "");
  EXPECT_STREQ(text.c_str(), "");
}

TEST(FixedText, TakesPiecesUpToItsRoom) {
  FixedText<5> text;
  EXPECT_TRUE(text.append("ab"));
  EXPECT_TRUE(text.append(""));
  EXPECT_TRUE(text.append("cde"));
  EXPECT_EQ(text.view(), "abcde");
  EXPECT_EQ(std::strlen(text.c_str()), 5u);
  EXPECT_TRUE(text.append(""));
}

TEST(FixedText, PieceThatDoesNotFitChangesNothing) {
  FixedText<3> text;
  EXPECT_FALSE(text.append("abcd"));
  EXPECT_EQ(text.view(), "");
  EXPECT_TRUE(text.append("ab"));
  EXPECT_FALSE(text.append("cd"));
  EXPECT_STREQ(text.c_str(), "ab");
  EXPECT_TRUE(text.append("c"));
  EXPECT_STREQ(text.c_str(), "abc");
}

TEST(FixedText, NulIsAByteLikeAnyOther) {
  FixedText<4> text;
  EXPECT_TRUE(text.append(std::string_view("a\0b", 3)));
  EXPECT_EQ(text.view(), std::string_view("a\0b", 3));
}

TEST(FixedText, WritesNumbersInDecimal) {
  FixedText<22> text;
  EXPECT_TRUE(text.append(uint64_t{0}));
  EXPECT_TRUE(text.append(","));
  EXPECT_TRUE(text.append(UINT64_MAX));
  EXPECT_EQ(text.view(), "0,18446744073709551615");
  EXPECT_FALSE(text.append(uint64_t{7}));
  EXPECT_EQ(text.view(), "0,18446744073709551615");
}

TEST(FixedText, CopiesAreApart) {
  FixedText<4> first;
  ASSERT_TRUE(first.append("ab"));
  FixedText<4> second = first;
  ASSERT_TRUE(second.append("c"));
  EXPECT_EQ(first.view(), "ab");
  EXPECT_EQ(second.view(), "abc");
}

}  // namespace
}  // namespace tarn
