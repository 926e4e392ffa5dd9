#include "archive/text/CountWhile.h"

#include <gtest/gtest.h>

#include <string>

#include "archive/text/HtmlTokens.h"

namespace tarn::archive {
namespace {

TEST(CountWhileTest, EndsAtTheFirstOther) {
  const auto isSmall = [](auto c) { return (c >= 'a') & (c <= 'z'); };
  for (size_t size = 0; size <= 50; ++size) {
    std::string text(size, 'x');
    EXPECT_EQ(CountWhile(text, isSmall), size);
    for (size_t other = 0; other < size; ++other) {
      text[other] = 'X';
      EXPECT_EQ(CountWhile(text, isSmall), other) << size;
      text[other] = 'x';
    }
  }
}

TEST(CountWhileTest, CountsAllThatAreWanted) {
  const auto isSmall = [](auto c) { return (c >= 'a') & (c <= 'z'); };
  EXPECT_EQ(CountAll("", isSmall), 0u);
  for (const size_t size : {1u, 15u, 16u, 17u, 2031u, 2032u, 2033u, 5000u}) {
    std::string text(size, 'x');
    EXPECT_EQ(CountAll(text, isSmall), size);
    for (size_t other = 0; other < size; other += 3) text[other] = other % 2 == 0 ? 'X' : '\xE4';
    EXPECT_EQ(CountAll(text, isSmall), size - (size + 2) / 3);
  }
}

TEST(CountWhileTest, CountsAscii) {
  EXPECT_EQ(CountAscii(""), 0u);
  EXPECT_EQ(CountAscii(std::string("\0 ~\x7F", 4)), 4u);
  EXPECT_EQ(CountAscii(std::string(20, 'a') + "\xC3\xA4"), 20u);
  EXPECT_EQ(CountAscii("\x80"), 0u);
}

TEST(CountWhileTest, HelpsToEscapeLongTexts) {
  const std::string plain(40, 'x');
  EXPECT_EQ(EscapedHtml(plain), plain);
  EXPECT_EQ(EscapedHtml("<" + plain + "&" + plain + "\"'>"),
            "&lt;" + plain + "&amp;" + plain + "&quot;&#39;&gt;");
}

}  // namespace
}  // namespace tarn::archive
