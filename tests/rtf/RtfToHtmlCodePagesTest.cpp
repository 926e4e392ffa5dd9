#include <gtest/gtest.h>

#include <string>

#include "RtfConversion.h"
#include "rtf/RtfToHtml.h"

namespace tarn {
namespace {

using test::Body;
using test::ConvertRtf;
using test::HtmlOf;
using test::InThreeFonts;
using test::kBodyStart;
using test::kThreeFonts;
using test::WithFonts;

// Skipped formatting ------------------------------------------------------------------------------

TEST(RtfBlocks, TextBetweenTheWordsIsDropped) {
  EXPECT_EQ(Body("a\\htmlrtf b\\par\\'41\\u5?\\{\r\n\\htmlrtf0 c"), "ac");
}

TEST(RtfBlocks, OneBlankAfterTheClosingWordIsEaten) {
  EXPECT_EQ(Body("a\\htmlrtf\\htmlrtf0  cd"), "a cd");
  EXPECT_EQ(Body("a\\htmlrtf\\htmlrtf0cd"), "acd");
}

TEST(RtfBlocks, FontsCount) {
  EXPECT_EQ(InThreeFonts("\\htmlrtf\\f2 \\htmlrtf0 \\'c0"), "&#x410;");
  EXPECT_EQ(InThreeFonts("\\htmlrtf\\f2\\f1 \\htmlrtf0 \\'82\\'a0"), "&#x3042;");
  EXPECT_EQ(InThreeFonts("\\f0\\htmlrtf\\f7 \\f x\\fs2 \\htmlrtf0 \\'c0"), "&#xC0;");
}

TEST(RtfBlocks, LanguagesCount) {
  EXPECT_EQ(Body("\\htmlrtf\\lang1049 \\htmlrtf0 \\'c0"), "&#x410;");
  EXPECT_EQ(Body("\\htmlrtf\\lang1041\\htmlrtf0 \\'82\\'a0"), "&#x3042;");
}

TEST(RtfBlocks, GroupsCount) {
  EXPECT_EQ(InThreeFonts("\\f0 \\htmlrtf{\\f2 \\htmlrtf0 \\'c0}\\'c0"), "&#x410;&#xC0;");
  EXPECT_EQ(InThreeFonts("\\f0 {\\f2 \\htmlrtf}\\htmlrtf0 \\'c0"), "&#xC0;");
}

// Code pages of the document and escaped braces are not told apart there.
TEST(RtfBlocks, NothingElseCounts) {
  EXPECT_EQ(Body("\\ansicpg1252 \\htmlrtf\\ansicpg1251 \\htmlrtf0 \\'c0"), "&#xC0;");
  EXPECT_EQ(InThreeFonts("\\f0 {\\f2 \\htmlrtf\\}\\htmlrtf0 \\'c0"), "&#xC0;");
  EXPECT_EQ(InThreeFonts("\\f0 \\htmlrtf\\{\\f2 \\htmlrtf0 x}\\'c0"), "x&#xC0;");
}

TEST(RtfBlocks, AnOpeningWordInsideIsText) {
  EXPECT_EQ(Body("a\\htmlrtf b\\htmlrtf c\\htmlrtf0 d"), "ad");
  EXPECT_EQ(Body("a\\htmlrtf\\htmlrtf00bcdefghi"), "a0bcdefghi");
}

TEST(RtfBlocks, AClosingWordOutsideOpensABlock) {
  EXPECT_EQ(Body("a\\htmlrtf0 b\\htmlrtf0 cd"), "acd");
}

// The last 9 bytes are never dropped, and a closing word there is not seen.
TEST(RtfBlocks, WithoutAClosingWordTheLastNineBytesAreText) {
  EXPECT_EQ(Body("a\\htmlrtf 123456789"), "a123456789");
  EXPECT_EQ(Body("a\\htmlrtf0123456789"), "a123456789");
  EXPECT_EQ(Body("a\\htmlrtf 0123456789"), "a123456789");
  EXPECT_EQ(Body("a\\htmlrtf b\\f0 23456789"), "a23456789");
  EXPECT_EQ(Body("a\\htmlrtf xyz\\par 3456"), "a\r\n3456");
  EXPECT_EQ(Body("a\\htmlrtf 12345"), "a12345");
  EXPECT_EQ(Body("a\\htmlrtf"), "a");
}

TEST(RtfBlocks, AClosingWordInTheLastNineBytesOpensABlock) {
  EXPECT_EQ(Body("a\\htmlrtf b\\htmlrtf0"), "a0");
  EXPECT_EQ(Body("a\\htmlrtf b\\htmlrtf0 "), "a");
  EXPECT_EQ(Body("a\\htmlrtf b\\htmlrtf0c"), "ac");
}

// A number reads on into the last bytes.
TEST(RtfBlocks, ANumberMayReachTheEnd) {
  EXPECT_EQ(Body("a\\htmlrtf \\f1234567890"), "a");
  EXPECT_EQ(Body("a\\htmlrtf \\lang123456789"), "a");
}

// Code pages --------------------------------------------------------------------------------------

TEST(RtfCodePages, TheFontComesFirst) {
  EXPECT_EQ(InThreeFonts("\\ansicpg1252 \\lang1033 \\f2 \\'c0"), "&#x410;");
  EXPECT_EQ(InThreeFonts("\\f1 \\'82\\'a0"), "&#x3042;");
  EXPECT_EQ(InThreeFonts("\\f1\\'82\\f1\\'a0").find("&#x3042;"), std::string::npos);
}

TEST(RtfCodePages, ThenTheLanguage) {
  EXPECT_EQ(Body("\\ansicpg1252 \\lang1049 \\'c0"), "&#x410;");
  EXPECT_EQ(Body("\\lang1033 \\'c0"), "&#xC0;");
  EXPECT_EQ(Body("\\lang1041 \\'82\\'a0"), "&#x3042;");
}

TEST(RtfCodePages, ThenTheDocument) { EXPECT_EQ(Body("\\ansicpg1251 \\'c0"), "&#x410;"); }

// Another language is tried as a code page.
TEST(RtfCodePages, AnotherLanguageLeavesTheBytes) {
  EXPECT_EQ(Body("\\ansicpg1252 \\lang2057 \\'c0"), "\xC0");
  EXPECT_EQ(Body("\\ansicpg1252 \\lang1251 \\'c0"), "&#x410;");
}

TEST(RtfCodePages, ALanguageOf0Or1IsNone) {
  EXPECT_EQ(Body("\\ansicpg1252 \\lang1049 \\lang0 \\'c0"), "&#xC0;");
  EXPECT_EQ(Body("\\ansicpg1252 \\lang1049 \\lang1 \\'c0"), "&#xC0;");
  EXPECT_EQ(Body("\\ansicpg1252 \\lang1049 \\langfe1033 \\'c0"), "fe1033 &#xC0;");
  EXPECT_EQ(Body("\\ansicpg1252 \\lang2 \\'c0"), "\xC0");
}

// Numbers from 2^31 on are below zero.
TEST(RtfCodePages, ANumberBelowZeroIsNone) {
  EXPECT_EQ(Body("\\ansicpg1252 \\lang2147483648 \\'c0"), "&#xC0;");
  EXPECT_EQ(Body("\\ansicpg1252 \\lang4294967295 \\'c0"), "&#xC0;");
  EXPECT_EQ(Body("\\ansicpg1252 \\lang2147483647 \\'c0"), "\xC0");
  EXPECT_EQ(Body("\\lang4294968345 \\'c0"), "&#x410;");  // 2^32 + 1049
}

TEST(RtfCodePages, AFontWithoutCodePageLeavesTheLanguage) {
  const std::string fonts = std::string(kThreeFonts) + "{\\f3 Other;}";
  EXPECT_EQ(HtmlOf(WithFonts(fonts, "\\lang1049 \\f1 \\f3 \\'c0")), "&#x410;");
}

TEST(RtfCodePages, AnUnknownFontChangesNothing) {
  EXPECT_EQ(InThreeFonts("\\f2 \\f7 \\'c0"), "&#x410;");
}

TEST(RtfCodePages, OfTwoFontsWithOneNumberTheFirstCounts) {
  const std::string fonts = "{\\f5\\fcharset204 A;}{\\f5\\fcharset0 B;}";
  EXPECT_EQ(HtmlOf(WithFonts(fonts, "\\f5 \\'c0")), "&#x410;");
  EXPECT_EQ(HtmlOf(WithFonts(fonts, "{\\fonttbl{\\f5\\fcharset0 C;}}\\f5 \\'c0")), "&#x410;");
}

TEST(RtfCodePages, AGroupBringsTheFontBack) {
  EXPECT_EQ(InThreeFonts("\\f0 {\\f2 {\\f0 \\'c0}\\'c0}\\'c0"), "&#xC0;&#x410;&#xC0;");
  EXPECT_EQ(InThreeFonts("\\f0 {{{\\f2 \\'c0}\\'c0}\\'c0}"), "&#x410;&#xC0;&#xC0;");
}

TEST(RtfCodePages, AGroupLeavesLanguageAndDocument) {
  EXPECT_EQ(Body("{\\lang1049 }\\'c0"), "&#x410;");
  EXPECT_EQ(Body("{\\ansicpg1251 }\\'c0"), "&#x410;");
}

// The tag that begins the body has a group of its own, so this end belongs to the head.
TEST(RtfCodePages, TheHeadPushesOnce) {
  EXPECT_EQ(HtmlOf("x\\f2 x" + WithFonts(kThreeFonts, "\\f0 }\\'c0")), "&#x410;");
  EXPECT_EQ(HtmlOf("x\\f2 x" + WithFonts(kThreeFonts, "\\f0 }\\f0 }\\'c0")), "&#xC0;");
}

// Font tables in the body -------------------------------------------------------------------------

TEST(RtfFontTables, AreReadInTheBody) {
  EXPECT_EQ(Body("{\\fonttbl{\\f5\\fcharset204 A;}}\\f5 \\'c0"), "&#x410;");
  EXPECT_EQ(Body("{\\fonttbl{\\f5\\fcharset0 A;}}{\\fonttbl{\\f6\\fcharset204 A;}}\\f6 \\'c0"),
            "&#x410;");
}

// The reader of the table takes its closing brace with it.
TEST(RtfFontTables, LeaveTheirGroupOpen) {
  EXPECT_EQ(InThreeFonts("\\f1 {\\fonttbl}\\f2 \\'c0}\\'82\\'a0"), "&#x410;&#x3042;");
}

TEST(RtfFontTables, ABackslashThatFewerThanTwoBytesFollowIsDamage) {
  for (const char* const table :
       {"{\\fonttbl{\\f0 A;}\\", "{\\fonttbl{\\f0 A;}\\x", "{\\fonttbl{\\f0 A;}\\}", "{\\fonttbl\\",
        "{\\fonttbl\\}", "{\\fonttbl\\x"}) {
    EXPECT_EQ(ConvertRtf(table).status, StatusNotSupported) << table;
    EXPECT_EQ(ConvertRtf(kBodyStart + "x" + table).status, StatusNotSupported) << table;
    EXPECT_EQ(HtmlOf(std::string(table) + "ab"), "") << table;
  }
}

// Every number finds its own font, however the numbers are spread.
TEST(RtfFontTables, ManyFonts) {
  for (const uint32_t factor : {1U, 2U, 65536U, 2654435761U, 4294967295U}) {
    std::string fonts;
    std::string body;
    std::string html;
    for (uint32_t i = 1; i < 500; ++i) {
      const std::string font = "\\f" + std::to_string(i * factor);
      fonts += "{" + font + (i % 3 == 0 ? "\\fcharset204 A;}" : "\\fcharset0 A;}");
      if (i * factor == UINT32_MAX) continue;
      body += font + " \\'c0";
      html += i % 3 == 0 ? "&#x410;" : "&#xC0;";
    }
    EXPECT_EQ(HtmlOf(WithFonts(fonts, body)), html) << factor;
  }
}

}  // namespace
}  // namespace tarn
