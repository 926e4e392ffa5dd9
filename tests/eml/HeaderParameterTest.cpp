#include "eml/HeaderSearch.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

namespace tarn {
namespace {

std::optional<std::string_view> Find(std::string_view text, std::string_view key) {
  return FindHeaderParameter(text, key);
}

TEST(HeaderParameter, StopsAtASemicolon) {
  EXPECT_EQ(Find("text/html; charset=utf-8; format=flowed", "charset="), "utf-8");
}

TEST(HeaderParameter, StopsAtAQuoteInsideAnUnquotedValue) {
  EXPECT_EQ(Find("charset=utf-8\"x", "charset="), "utf-8");
}

TEST(HeaderParameter, StopsAtALineEndOfEitherKind) {
  EXPECT_EQ(Find("charset=a\r\nb", "charset="), "a");
  EXPECT_EQ(Find("charset=a\nb", "charset="), "a");
  EXPECT_EQ(Find("charset=a\rb\n", "charset="), "a");
}

TEST(HeaderParameter, RunsToTheEndWithoutALineEnd) {
  EXPECT_EQ(Find("charset=abc", "charset="), "abc");
}

TEST(HeaderParameter, IgnoresTheCaseOfTheKey) {
  EXPECT_EQ(Find("CharSet=Big5", "charset="), "Big5");
}

TEST(HeaderParameter, QuotedValueLosesItsQuotesAndMayHoldSemicolons) {
  EXPECT_EQ(Find("filename=\"a;b.txt\"; x=1", "filename="), "a;b.txt");
  EXPECT_EQ(Find("filename=\"\"", "filename="), "");
}

TEST(HeaderParameter, QuoteWithoutAPartnerOnTheLineIsDropped) {
  EXPECT_EQ(Find("filename=\"a.txt; x=1\r\n \"", "filename="), "a.txt");
  EXPECT_EQ(Find("filename=\"a.txt\r\n\"", "filename="), "a.txt");
  EXPECT_EQ(Find("filename=\"", "filename="), "");
}

TEST(HeaderParameter, BlanksButNoTabsArePassedOver) {
  EXPECT_EQ(Find("name=   a", "name="), "a");
  EXPECT_EQ(Find("name=  \"a b\"", "name="), "a b");
  EXPECT_EQ(Find("name=\ta", "name="), "\ta");
  EXPECT_EQ(Find("name=   ", "name="), "");
}

TEST(HeaderParameter, NameIsNotFoundInsideALongerName) {
  EXPECT_EQ(Find("filename=a", "name="), std::nullopt);
  EXPECT_EQ(Find("x-name=a", "name="), std::nullopt);
  EXPECT_EQ(Find("x_name=a", "name="), std::nullopt);
  EXPECT_EQ(Find("9name=a", "name="), std::nullopt);
  EXPECT_EQ(Find("Zname=a", "name="), std::nullopt);
  EXPECT_EQ(Find("filename=a; name=b", "name="), "b");
}

TEST(HeaderParameter, OtherBytesBeforeTheKeyAreAllowed) {
  EXPECT_EQ(Find(";name=a", "name="), "a");
  EXPECT_EQ(Find("\tname=a", "name="), "a");
  EXPECT_EQ(Find("\xC3\xA4name=a", "name="), "a");
  EXPECT_EQ(Find("name=a", "name="), "a");
}

TEST(HeaderParameter, NothingBeforeTheStartIsLookedAt) {
  const std::string_view text = "xname=a";
  const auto value = Find(text.substr(1), "name=");
  ASSERT_TRUE(value.has_value());
  EXPECT_EQ(value->data(), text.data() + 6);
  EXPECT_EQ(*value, "a");
}

TEST(HeaderParameter, AsteriskFormsAreNotFound) {
  EXPECT_EQ(Find("attachment; filename*=utf-8''a.txt", "filename="), std::nullopt);
  EXPECT_EQ(Find("attachment; filename*0=a; filename*1=b", "filename="), std::nullopt);
}

TEST(HeaderParameter, KeyThatEndsAtTheEndIsNotFound) {
  EXPECT_EQ(Find("x; charset=", "charset="), std::nullopt);
  EXPECT_EQ(Find("charset=", "charset="), std::nullopt);
  EXPECT_EQ(Find("charset=\n", "charset="), "");
  EXPECT_EQ(Find("xcharset=charset=", "charset="), std::nullopt);
}

TEST(HeaderParameter, EmptyStretchHasNone) { EXPECT_EQ(Find("", "name="), std::nullopt); }

TEST(HeaderParameter, ValueOnAFoldedLineIsFound) {
  EXPECT_EQ(Find("attachment;\r\n filename=a.txt\r\n", "filename="), "a.txt");
}

TEST(HeaderParameter, MegabyteOfDisqualifiedKeysIsPassed) {
  std::string text;
  for (int i = 0; i < 100000; ++i) text += "xname=";
  EXPECT_EQ(Find(text, "name="), std::nullopt);
  EXPECT_EQ(Find(text + ";name=v", "name="), "v");
}

}  // namespace
}  // namespace tarn
