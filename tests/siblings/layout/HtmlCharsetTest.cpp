#include "siblings/layout/HtmlCharset.h"

#include <gtest/gtest.h>

namespace tarn::test {
namespace {

using namespace std::string_view_literals;
using pages::DecodeHtmlDocument;
using pages::NamedCharset;

TEST(HtmlCharset, IsFoundInAMetaElement) {
  EXPECT_EQ(NamedCharset("<meta http-equiv=Content-Type content=\"text/html; charset=UTF-8\">"),
            "utf-8");
  EXPECT_EQ(NamedCharset("<meta charset = 'Windows-1251'>"), "windows-1251");
  EXPECT_EQ(NamedCharset("<p>no charset here</p>"), "");
  EXPECT_EQ(NamedCharset(std::string(9'000, ' ') + "<meta charset=utf-8>"), "");
}

TEST(HtmlCharset, TheNamedCharsetIsRead) {
  EXPECT_EQ(DecodeHtmlDocument("<meta charset=windows-1251>\xCF\xF0\xE8"),
            "<meta charset=windows-1251>\u041F\u0440\u0438");
  EXPECT_EQ(DecodeHtmlDocument("<meta charset=shift_jis>\x93\xFA\x96\x7B"),
            "<meta charset=shift_jis>\u65E5\u672C");
  EXPECT_EQ(DecodeHtmlDocument("<meta charset=gb2312>\xC4\xE3"), "<meta charset=gb2312>\u4F60");
  EXPECT_EQ(DecodeHtmlDocument("<meta charset=big5>\xA4\xA4"), "<meta charset=big5>\u4E2D");
  EXPECT_EQ(DecodeHtmlDocument("<meta charset=euc-kr>\xC7\xD1"), "<meta charset=euc-kr>\uD55C");
  EXPECT_EQ(DecodeHtmlDocument("<meta charset=iso-2022-jp>\x1B$B\x46\x7C\x1B(B"),
            "<meta charset=iso-2022-jp>\u65E5");
}

TEST(HtmlCharset, Latin1IsWindows1252) {
  EXPECT_EQ(DecodeHtmlDocument("<meta charset=iso-8859-1>\x80\xE4"),
            "<meta charset=iso-8859-1>\u20AC\u00E4");
}

TEST(HtmlCharset, WithoutANameUtf8OrElseWindows1252) {
  EXPECT_EQ(DecodeHtmlDocument("<p>\u00E4\u20AC"), "<p>\u00E4\u20AC");
  EXPECT_EQ(DecodeHtmlDocument("<p>\xE4\x80"), "<p>\u00E4\u20AC");
  EXPECT_EQ(DecodeHtmlDocument("<meta charset=no-such>\xE4"), "<meta charset=no-such>\u00E4");
}

TEST(HtmlCharset, LinesThatClaimUtf8InVain) {
  EXPECT_EQ(DecodeHtmlDocument("<meta charset=utf-8>\u00E4\n\xE4"),
            "<meta charset=utf-8>\u00E4\n\u00E4");
}

TEST(HtmlCharset, MarksDecide) {
  EXPECT_EQ(DecodeHtmlDocument("\xEF\xBB\xBF<meta charset=big5>\u00E4"),
            "<meta charset=big5>\u00E4");
  EXPECT_EQ(DecodeHtmlDocument("\xFF\xFE<\0p\0>\0\xAC\x20"sv), "<p>\u20AC");
  EXPECT_EQ(DecodeHtmlDocument("\xFE\xFF\0<\x20\xAC"sv), "<\u20AC");
}

TEST(HtmlCharset, LongTextsAreConvertedWhole) {
  std::string bytes = "<meta charset=windows-1251>";
  std::string text = bytes;
  for (int i = 0; i < 20'000; ++i) {
    bytes += '\xCF';
    text += "\u041F";
  }
  EXPECT_EQ(DecodeHtmlDocument(bytes), text);
}

}  // namespace
}  // namespace tarn::test
