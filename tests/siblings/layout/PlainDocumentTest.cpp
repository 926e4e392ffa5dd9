#include "siblings/layout/PlainDocument.h"

#include <gtest/gtest.h>

namespace tarn::test {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using pages::DecodePlainDocument;

std::string Utf16(std::u16string_view text) {
  std::string bytes;
  for (const char16_t unit : text) {
    bytes += static_cast<char>(unit & 0xFF);
    bytes += static_cast<char>(unit >> 8);
  }
  return bytes;
}

TEST(PlainDocument, AStoresRowsAreUtf8AndItsBodyUtf16) {
  EXPECT_EQ(DecodePlainDocument("\xFF\xFE"
                                "From:      \tJos\u00E9\r\nSubject:   \tNotes\r\n\r\n" +
                                Utf16(u"Gr\u00FC\u00DFe, \u4F60\u597D\r\nEnd")),
            "From:      \tJos\u00E9\nSubject:   \tNotes\n\nGr\u00FC\u00DFe, \u4F60\u597D\nEnd");
}

TEST(PlainDocument, AStoresBodyMayBeCutInACharacter) {
  const std::string whole =
      "\xFF\xFE"
      "From:      \tAnn\r\n" +
      Utf16(u"abc");
  EXPECT_EQ(DecodePlainDocument(whole.substr(0, whole.size() - 1)), "From:      \tAnn\nab");
  EXPECT_EQ(DecodePlainDocument(whole.substr(0, whole.size() - 2)), "From:      \tAnn\nab");
}

TEST(PlainDocument, ARowsValueMayHaveLinesOfItsOwn) {
  EXPECT_EQ(DecodePlainDocument("\xFF\xFETo:        \tAnn\r\n Bob\r\n" + Utf16(u"Body")),
            "To:        \tAnn\n Bob\nBody");
}

TEST(PlainDocument, ARowsValueMayHoldControlCharacters) {
  for (const std::string& odd : {"\v"s, "\x01"s, "\x7F"s, "\0"s, "\x1B\x02"s}) {
    const std::string row = "\xFF\xFESubject:   \tA" + odd + "note\r\nSent:      \tnow\r\n";
    EXPECT_EQ(
        DecodePlainDocument(row + Utf16(u"Body")),
        std::string("Subject:   \tA") + (odd == "\v" ? "\n" : "") + "note\nSent:      \tnow\nBody")
        << static_cast<int>(odd[0]);
  }
}

TEST(PlainDocument, LabelsOfOtherScriptsAreRowsToo) {
  EXPECT_EQ(DecodePlainDocument("\xFF\xFE\u5DEE\u51FA\u4EBA:  \tAnn\r\n" + Utf16(u"\u672C\u6587")),
            "\u5DEE\u51FA\u4EBA:  \tAnn\n\u672C\u6587");
}

TEST(PlainDocument, AStoresBodyWithoutRows) {
  EXPECT_EQ(DecodePlainDocument("\xFF\xFE" + Utf16(u"No rows:\there\r\n")), "No rows:\there\n");
}

TEST(PlainDocument, AStoresBodyOfBytesIsShownAsBytes) {
  EXPECT_EQ(DecodePlainDocument("\xFF\xFE"
                                "From:      \tAnn\r\nHello,\r\nno wide text here"),
            "From:      \tAnn\nHello,\nno wide text here");
}

TEST(PlainDocument, Utf8BehindItsMarkMayBeCutInACharacter) {
  EXPECT_EQ(DecodePlainDocument("\xEF\xBB\xBF"
                                "caf\u00E9 \xE2\x82"),
            "caf\u00E9 ");
}

TEST(PlainDocument, TheMarkOf7BitTextIsNotShown) {
  EXPECT_EQ(DecodePlainDocument("+/vFrom:   \tJos\u00E9\r\n\r\nHi"), "From:   \tJos\u00E9\n\nHi");
  EXPECT_EQ(DecodePlainDocument("+/+ no mark"), "+/+ no mark");
}

TEST(PlainDocument, WithoutAMarkALineIsUtf8OrElseWindows1252) {
  EXPECT_EQ(DecodePlainDocument("caf\u00E9 \u20AC"), "caf\u00E9 \u20AC");
  EXPECT_EQ(DecodePlainDocument("caf\xE9 \x80\nna\xEFve"), "caf\u00E9 \u20AC\nna\u00EFve");
  EXPECT_EQ(DecodePlainDocument("From: \tJos\u00E9\r\n\r\ncaf\xE9"),
            "From: \tJos\u00E9\n\ncaf\u00E9");
}

TEST(PlainDocument, NulsAtTheEndAndControlCharactersAreNotShown) {
  EXPECT_EQ(DecodePlainDocument("a\0b\x07\x1B\x7F\u0085\uFEFFc\td\0\0"sv), "abc\td");
  EXPECT_EQ(DecodePlainDocument("\xFF\xFE" + Utf16(u"ab") + std::string(4, '\0')), "ab");
}

TEST(PlainDocument, EveryLineEndIsOne) {
  EXPECT_EQ(DecodePlainDocument("a\r\nb\nc\rd\r\r\n\u2028e"), "a\nb\nc\nd\n\n\ne");
  EXPECT_EQ(DecodePlainDocument("one\ftwo\vthree"), "one\ntwo\nthree");
}

TEST(PlainDocument, NothingIsNothing) {
  EXPECT_EQ(DecodePlainDocument(""), "");
  EXPECT_EQ(DecodePlainDocument("\xFF\xFE"), "");
  EXPECT_EQ(DecodePlainDocument("\xEF\xBB\xBF"), "");
  EXPECT_EQ(DecodePlainDocument("+/v"), "");
  EXPECT_EQ(DecodePlainDocument("\0\0\0"sv), "");
}

}  // namespace
}  // namespace tarn::test
