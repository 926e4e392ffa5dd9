// The text of a group.
#include "siblings/office/RtfText.h"

#include <gtest/gtest.h>

namespace tarn::pages {
namespace {

std::string TextOf(std::string_view rest) {
  RtfScanner scanner(rest);
  return RestOfGroup(scanner);
}

TEST(RtfText, EndsWithItsGroup) {
  RtfScanner scanner("ab{c}d} after");
  EXPECT_EQ(RestOfGroup(scanner), "abcd");
  EXPECT_EQ(scanner.next()->bytes, " after");
}

TEST(RtfText, LeavesOutWordsAndLineEnds) {
  EXPECT_EQ(TextOf("{\\b IN}\r\nCLUDE\\insrsid12 PICTURE}"), "INCLUDEPICTURE");
}

TEST(RtfText, ReadsEscapes) { EXPECT_EQ(TextOf(R"(a\\b\{c\}d\~e\_f\'41\'zz})"), "a\\b{c}d e-fA"); }

TEST(RtfText, ReadsUnicodeAndPassesItsFallback) {
  EXPECT_EQ(TextOf(R"(\u233?x\u8364\'80y\u65?})"), "éx€yA");
  EXPECT_EQ(TextOf(R"(\uc0\u233 x})"), "éx");
  EXPECT_EQ(TextOf(R"(\uc2\u233??x})"), "éx");
}

TEST(RtfText, LeavesOutGroupsThatReadersMayIgnore) {
  EXPECT_EQ(TextOf(R"(a{\*\datafield 00d0{x}y}b{c\*}d})"), "abcd");
}

TEST(RtfText, EndsWithTheDocument) { EXPECT_EQ(TextOf("ab{c"), "abc"); }

TEST(RtfText, OfALongTextKeepsTheBeginning) {
  EXPECT_LE(TextOf(std::string(kLongestGroupText * 2, 'a') + "}").size(), kLongestGroupText);
}

}  // namespace
}  // namespace tarn::pages
