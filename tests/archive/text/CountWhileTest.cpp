#include "archive/text/CountWhile.h"

#include <gtest/gtest.h>

#include <string>

#include "archive/text/HtmlTokens.h"

namespace tarn::archive {
namespace {

TEST(CountWhileTest, EndsAtTheFirstOther) {
  const auto isSmall = [](char c) { return c >= 'a' && c <= 'z'; };
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
