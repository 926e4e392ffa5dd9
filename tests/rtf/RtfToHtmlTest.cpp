#include "rtf/RtfToHtml.h"

#include <gtest/gtest.h>

#include <string>

#include "RtfConversion.h"
#include "Tarnbase/PlainKernel.h"
#include "rtf/RtfFontTable.h"

namespace tarn {
namespace {

using test::Body;
using test::BytesOf;
using test::ConvertRtf;
using test::HtmlOf;
using test::kBodyStart;
using test::Repeat;

// A document with these font groups in its table, and a body.
std::string WithFonts(std::string_view fonts, std::string_view body) {
  return "{\\rtf1{\\fonttbl" + std::string(fonts) + "} " + kBodyStart + std::string(body);
}

constexpr std::string_view kThreeFonts =
    "{\\f0\\fcharset0 Arial;}{\\f1\\fcharset128 MS Gothic;}{\\f2\\fcharset204 Arial;}";

std::string InThreeFonts(std::string_view body) { return HtmlOf(WithFonts(kThreeFonts, body)); }

// The mail as programs write it.
TEST(RtfToHtml, AWholeMail) {
  EXPECT_EQ(
      HtmlOf("{\\rtf1\\ansi\\ansicpg1252\\fromhtml1 \\deff0{\\fonttbl\r\n"
             "{\\f0\\fswiss\\fcharset0 Arial;}\r\n{\\f1\\fmodern Courier New;}}\r\n"
             "{\\colortbl\\red0\\green0\\blue0;}\r\n\\uc1\\pard\\plain\\deftab360 \\f0\\fs24 \r\n"
             "{\\*\\htmltag19 <html>}{\\*\\htmltag34 <head>}\\htmlrtf \\par \\htmlrtf0 \r\n"
             "{\\*\\htmltag161 <title>}caf\\'e9{\\*\\htmltag169 </title>}\r\n"
             "{\\*\\mhtmltag84 <img src=\"cid:1\">}{\\*\\htmltag84 <img src=\"x.png\">}\r\n"
             "{\\*\\htmltag64 <p>}\\htmlrtf {\\htmlrtf0 a\\tab b\\{c\\}\\u8364?\\par\r\n"
             "{\\*\\htmltag72 </p>}\\htmlrtf\\par}\\htmlrtf0 \\plain {\\*\\htmltag27 </html>}}\0"),
      "<html><head><title>caf&#xE9;</title><img src=\"cid:1\"><p>a   b{c}&#8364;\r\n"
      "</p> </html>");
}

TEST(RtfToHtml, WithoutATagNothingRemains) {
  EXPECT_EQ(ConvertRtf("{\\rtf1\\ansi text\\par}").bytes, std::string(1, '\0'));
  EXPECT_EQ(ConvertRtf("").bytes, std::string(1, '\0'));
  EXPECT_EQ(ConvertRtf("{\\*\\htmlta").bytes, std::string(1, '\0'));
  EXPECT_EQ(ConvertRtf("\\*\\htmltag1 x").bytes, std::string(1, '\0'));
}

TEST(RtfToHtml, AnAbsentTextIsAnEmptyOne) {
  SizedBytes text;
  EXPECT_EQ(RtfToHtml(text), 1);
  ASSERT_EQ(text.length, 1U);
  EXPECT_EQ(text.data[0], '\0');
}

TEST(RtfToHtml, ATextEndsWithOneNul) {
  EXPECT_EQ(ConvertRtf(kBodyStart + "ab").bytes, std::string("ab\0", 3));
  EXPECT_EQ(ConvertRtf(kBodyStart + "ab" + '\0').bytes, std::string("ab\0", 3));
  EXPECT_EQ(ConvertRtf(kBodyStart + "a" + '\0' + "b").bytes, std::string("a\0b\0", 4));
  EXPECT_EQ(ConvertRtf(kBodyStart + "a\\'00").bytes, std::string("a\0", 2));
}

TEST(RtfToHtml, EveryOtherByteIsCopied) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) {
    if (std::string_view("{}\\\r\n").find(static_cast<char>(byte)) == std::string_view::npos) {
      all += static_cast<char>(byte);
    }
  }
  EXPECT_EQ(Body(all), all);
}

TEST(RtfToHtml, BracesAreNotWritten) { EXPECT_EQ(Body("a{b{c}d}}}e{"), "abcde"); }

TEST(RtfToHtml, LineEndPairsAreDropped) {
  EXPECT_EQ(Body("a\r\nb"), "ab");
  EXPECT_EQ(Body("a\n\rb"), "ab");
  EXPECT_EQ(Body("a\rb"), "a\rb");
  EXPECT_EQ(Body("a\nb"), "a\nb");
  EXPECT_EQ(Body("a\r\rb"), "a\r\rb");
  EXPECT_EQ(Body("a\n\nb"), "a\n\nb");
  EXPECT_EQ(Body("a\r\n\rb"), "a\rb");
  EXPECT_EQ(Body("a\r\r\nb"), "a\rb");
  EXPECT_EQ(Body("a\r"), "a\r");
  EXPECT_EQ(Body("a\n"), "a\n");
}

TEST(RtfToHtml, AParagraphAtTheEndEatsItsBlank) {
  EXPECT_EQ(Body("a\\par "), "a\r\n");
  EXPECT_EQ(Body("a\\par"), "a\r\n");
  EXPECT_EQ(Body("\\pard\\plain\\par"), "&nbsp;\r\n");
}

TEST(RtfToHtml, AnUnknownWordKeepsItsText) {
  EXPECT_EQ(Body("\\b"), "\\b");
  EXPECT_EQ(Body("{\\b bold}"), "\\b bold");
}

// The head ----------------------------------------------------------------------------------------

TEST(RtfHead, TheCodePageOfTheDocument) {
  EXPECT_EQ(HtmlOf("{\\rtf1\\ansi\\ansicpg1252 x" + kBodyStart + "\\'e9"), "&#xE9;");
  EXPECT_EQ(HtmlOf("{\\rtf1\\ansi\\ansicpg1251 x" + kBodyStart + "\\'e9"), "&#x439;");
  EXPECT_EQ(HtmlOf("{\\rtf1\\ansi " + kBodyStart + "\\'e9"), "\xE9");
}

// The byte behind each word is passed over, whatever it is.
TEST(RtfHead, OfTwoWordsInARowTheSecondIsNotSeen) {
  const std::string fonts = "{\\fonttbl" + std::string(kThreeFonts) + "} ";
  EXPECT_EQ(HtmlOf("\\ansicpg1252\\deff2" + fonts + kBodyStart + "\\'e9"), "&#xE9;");
  EXPECT_EQ(HtmlOf("\\ansicpg1252 x\\deff2" + fonts + kBodyStart + "\\'e9"), "&#x439;");
  EXPECT_EQ(HtmlOf("\\deff2\\ansicpg1252" + kBodyStart + "\\'e9"), "\xE9");
  EXPECT_EQ(HtmlOf("\\ansicpg1252" + kBodyStart + "a" + kBodyStart + "\\'e9"), "&#xE9;");
  EXPECT_EQ(HtmlOf(fonts + "\\f2\\f0 " + kBodyStart + "\\'e9"), "&#x439;");
}

// A tag that follows a word or the font table at once is not the first.
TEST(RtfHead, ATagRightBehindAWordIsNotSeen) {
  EXPECT_EQ(HtmlOf("{\\deff0{\\*\\htmltag1 a}b{\\*\\htmltag2 c}d"), "cd");
  EXPECT_EQ(HtmlOf("{\\deff0 {\\*\\htmltag1 a}b{\\*\\htmltag2 c}d"), "cd");
  EXPECT_EQ(HtmlOf("{\\fonttbl}{\\*\\htmltag1 a}b{\\*\\htmltag2 c}d"), "cd");
  EXPECT_EQ(HtmlOf("{\\fonttbl} {\\*\\htmltag1 a}b{\\*\\htmltag2 c}d"), "abcd");
}

TEST(RtfHead, TheDefaultFontCountsUntilAFontIsSeen) {
  EXPECT_EQ(HtmlOf("\\deff2 x" + WithFonts(kThreeFonts, "\\'c0")), "&#x410;");
  EXPECT_EQ(HtmlOf("\\deff2 \\f0 x" + WithFonts(kThreeFonts, "\\'c0")), "&#x410;");
  EXPECT_EQ(HtmlOf("\\deff2 x\\f0 x" + WithFonts(kThreeFonts, "\\'c0")), "&#xC0;");
  EXPECT_EQ(HtmlOf("\\f0 x\\deff2 x" + WithFonts(kThreeFonts, "\\'c0")), "&#xC0;");
  EXPECT_EQ(HtmlOf("\\f0 x\\f2 x" + WithFonts(kThreeFonts, "\\'c0")), "&#x410;");
}

TEST(RtfHead, WithoutAnyFontTheDocumentDecides) {
  EXPECT_EQ(HtmlOf("\\ansicpg1251 x" + WithFonts("{\\f0\\fcharset0 A;}", "\\'c0")), "&#x410;");
  EXPECT_EQ(HtmlOf("\\ansicpg1251 x\\f7 x" + WithFonts("{\\f0\\fcharset0 A;}", "\\'c0")),
            "&#x410;");
}

// A font of that number is never found, though the table may hold one.
TEST(RtfHead, AllOnesIsNoFont) {
  EXPECT_EQ(HtmlOf("\\f4294967295 x" + WithFonts("{\\f4294967295\\fcharset0 A;}", "\\'c0")),
            "\xC0");
  EXPECT_EQ(HtmlOf(WithFonts("{\\f4294967295\\fcharset0 A;}", "\\f4294967295 \\'c0")), "\xC0");
  EXPECT_EQ(HtmlOf(WithFonts("{\\f4294967294\\fcharset0 A;}", "\\f4294967294 \\'c0")), "&#xC0;");
}

TEST(RtfHead, AFontWithoutADigitIsNone) {
  EXPECT_EQ(HtmlOf("\\ansicpg1252 x\\f-2 \\fs2 \\f x" + WithFonts(kThreeFonts, "\\'c0")), "&#xC0;");
}

TEST(RtfHead, BracesAreNotCounted) {
  EXPECT_EQ(HtmlOf("x\\f2 x" + WithFonts(kThreeFonts, "}\\f0 }\\'c0")), "&#xC0;");
  EXPECT_EQ(HtmlOf("{{{x\\f2 x" + WithFonts(kThreeFonts, "\\f0 }\\'c0}\\f0 \\'c0")),
            "&#x410;&#xC0;");
}

// Skipped formatting, line ends and text of the head are not written.
TEST(RtfHead, NothingIsWritten) {
  EXPECT_EQ(HtmlOf("abc\\par\\u5?\\'41\r\\{" + kBodyStart + "x"), "x");
}

TEST(RtfHead, AWordAtTheEnd) {
  EXPECT_EQ(HtmlOf("{\\ansicpg"), "");
  EXPECT_EQ(HtmlOf("{\\deff1"), "");
  EXPECT_EQ(HtmlOf("{\\f1"), "");
  EXPECT_EQ(HtmlOf("{\\f"), "");
  EXPECT_EQ(HtmlOf("{\\fonttbl"), "");
  EXPECT_EQ(HtmlOf("\\"), "");
}

// Tags --------------------------------------------------------------------------------------------

TEST(RtfTags, AReplacedTagIsDropped) {
  EXPECT_EQ(Body("{\\*\\mhtmltag84 <new>}{\\*\\htmltag84 <old>}x"), "<new>x");
  EXPECT_EQ(Body("{\\*\\mhtmltag84 <new>}a\\par{\\*\\htmltag84 <old>}x"), "<new>a\r\nx");
}

TEST(RtfTags, ATagWithoutReplacementIsWritten) { EXPECT_EQ(Body("{\\*\\htmltag84 <p>}"), "<p>"); }

TEST(RtfTags, AnotherNumberEndsTheWaiting) {
  EXPECT_EQ(Body("{\\*\\mhtmltag5 a}{\\*\\htmltag6 b}"), "ab");
  EXPECT_EQ(Body("{\\*\\mhtmltag5 a}{\\*\\htmltag6 b}{\\*\\htmltag5 c}"), "abc");
}

TEST(RtfTags, AReplacementCountsOnce) {
  EXPECT_EQ(Body("{\\*\\mhtmltag5 a}{\\*\\htmltag5 b}{\\*\\htmltag5 c}"), "ac");
}

TEST(RtfTags, TheLastReplacementCounts) {
  EXPECT_EQ(Body("{\\*\\mhtmltag5 a}{\\*\\mhtmltag6 b}{\\*\\htmltag5 c}"), "abc");
  EXPECT_EQ(Body("{\\*\\mhtmltag5 a}{\\*\\mhtmltag6 b}{\\*\\htmltag6 c}"), "ab");
}

TEST(RtfTags, NoNumberIs0) { EXPECT_EQ(Body("{\\*\\mhtmltag a}{\\*\\htmltag b}c"), "ac"); }

// Numbers are of 32 bits, and so is the mark of no replacement.
TEST(RtfTags, NumbersWrap) {
  EXPECT_EQ(Body("{\\*\\mhtmltag4294967301 a}{\\*\\htmltag5 b}c"), "ac");
  EXPECT_EQ(Body("{\\*\\htmltag4294967295 b}c"), "c");
}

TEST(RtfTags, ADroppedTagReachesToTheFirstBrace) {
  EXPECT_EQ(Body("{\\*\\mhtmltag5 a}{\\*\\htmltag5 {b\\}c}d"), "acd");
  EXPECT_EQ(Body("{\\*\\mhtmltag5 a}{\\*\\htmltag5 bcd"), "a");
}

// The group of a dropped tag never ends for the stack, so that the next group that ends brings back
// the code page that the tag began with.
TEST(RtfTags, ADroppedTagLeavesItsGroupOpen) {
  EXPECT_EQ(InThreeFonts("\\f0 {\\*\\mhtmltag5 }\\f1 {\\*\\htmltag5 }\\f2 \\'c0}\\'82\\'a0"),
            "&#x410;&#x3042;");
  EXPECT_EQ(InThreeFonts("\\f1 {\\f0 {\\*\\mhtmltag5 }{\\*\\htmltag5 }\\f2 }\\'c0}\\'82\\'a0"),
            "&#xC0;&#x3042;");
}

// Skipped formatting ------------------------------------------------------------------------------

TEST(RtfBlocks, TextBetweenTheWordsIsDropped) {
  EXPECT_EQ(Body("a\\htmlrtf b\\par\\'41\\u5?\\{\r\n\\htmlrtf0 c"), "ac");
}

TEST(RtfBlocks, OneBlankBehindTheClosingWordIsEaten) {
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

TEST(RtfFontTables, ABackslashAtTheEndIsDamage) {
  EXPECT_EQ(ConvertRtf("{\\fonttbl{\\f0 A;}\\").status, -9);
  EXPECT_EQ(ConvertRtf(kBodyStart + "x{\\fonttbl{\\f0 A;}\\").status, -9);
}

TEST(RtfFontTables, TooManyFontsAreRefused) {
  const std::string fonts = Repeat("{}", kMaxRtfFonts + 1);
  EXPECT_EQ(ConvertRtf(kBodyStart + "x{\\fonttbl" + fonts + "}").status, -1);
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

// Unicode -----------------------------------------------------------------------------------------

TEST(RtfUnicode, AReferenceReplacesTheStandIn) {
  EXPECT_EQ(Body("\\u8364?"), "&#8364;");
  EXPECT_EQ(Body("\\u8364?x"), "&#8364;x");
  EXPECT_EQ(Body("\\u8364"), "&#8364;");
  EXPECT_EQ(Body("\\u8364 "), "&#8364;");
}

// The stand-in is one byte, whatever it is.
TEST(RtfUnicode, AStandInOfMoreBytesLeavesItsRest) {
  EXPECT_EQ(Body("\\u8364\\'80"), "&#8364;'80");
  EXPECT_EQ(Body("\\u8364\\u8364?"), "&#8364;u8364?");
  EXPECT_EQ(InThreeFonts("\\f0 {\\f2 \\u8364}\\'c0"), "&#8364;&#x410;");
}

TEST(RtfUnicode, ANegativeNumberIsNotUnderstood) {
  EXPECT_EQ(Body("\\u-4064?"), "&#0;4064?");
  EXPECT_EQ(Body("\\u-"), "&#0;");
  EXPECT_EQ(Body("\\*-x"), "&#0;x");
}

TEST(RtfUnicode, NumbersWrapAndAreSigned) {
  EXPECT_EQ(Body("\\u2147483647?"), "&#2147483647;");
  EXPECT_EQ(Body("\\u2147483648?"), "&#-2147483648;");
  EXPECT_EQ(Body("\\u4294967295?"), "&#-1;");
  EXPECT_EQ(Body("\\u4294967296?"), "&#0;");
  EXPECT_EQ(Body("\\u0000000000000000000065?"), "&#65;");
}

// Room --------------------------------------------------------------------------------------------

const std::string kEuro = "&#x20AC;";

std::string EuroRun(size_t count) { return "\\ansicpg1252 " + Repeat("\\'80", count); }

// A run of 8-byte references can fill the block to its last byte. The step behind it gets room
// between 0 and 1024 bytes in front of the limit, and only that is used.
TEST(RtfRoom, AReferenceBehindALongRunIsCut) {
  EXPECT_EQ(Body(EuroRun(256) + "\\u8364?x"), Repeat(kEuro, 256) + "x");
  EXPECT_EQ(Body(EuroRun(255) + "\\u8364?x"), Repeat(kEuro, 255) + "&#8364;x");
  EXPECT_EQ(Body(EuroRun(255) + "\\u65536?x"), Repeat(kEuro, 255) + "&#65536;x");
  EXPECT_EQ(Body(EuroRun(255) + "\\u165536?x"), Repeat(kEuro, 255) + "&#165536x");
  EXPECT_EQ(Body(EuroRun(255) + "\\u2147483648?x"), Repeat(kEuro, 255) + "&#-21474x");
  EXPECT_EQ(Body(EuroRun(254) + "\\u2147483648?x"), Repeat(kEuro, 254) + "&#-2147483648;x");
}

// The block grows a step later, so every further reference has 1024 bytes more.
TEST(RtfRoom, TheNextReferenceIsWhole) {
  EXPECT_EQ(Body(EuroRun(256) + "\\u8364?\\u8364?"), Repeat(kEuro, 256) + "&#8364;");
  EXPECT_EQ(Body(EuroRun(256) + "{\\u8364?"), Repeat(kEuro, 256) + "&#8364;");
  EXPECT_EQ(Body(EuroRun(256) + "\r\n\\u8364?"), Repeat(kEuro, 256) + "&#8364;");
  EXPECT_EQ(Body(EuroRun(256) + "-\\u8364?"), Repeat(kEuro, 256) + "-&#8364;");
}

// A run of 257 does not fit, gets its own 1024 bytes, and leaves room for all.
TEST(RtfRoom, ARunThatGrowsTheBlockLeavesRoom) {
  EXPECT_EQ(Body(EuroRun(257) + "\\u8364?"), Repeat(kEuro, 257) + "&#8364;");
}

// `before` plain bytes and a run that ends exactly where the block should end if these have made it
// grow to `capacity`; without room for the reference behind it.
bool FillsTheBlock(size_t before, size_t capacity) {
  const std::string plain(before, '.');
  const size_t units = (capacity - before) / 8;
  EXPECT_EQ((capacity - before) % 8, 0U);
  const std::string html = Body("\\ansicpg1252 " + plain + Repeat("\\'80", units) + "\\u8364?");
  const std::string run = plain + Repeat(kEuro, units);
  if (html == run) return true;
  EXPECT_EQ(html, run + "&#8364;");
  return false;
}

// Before a step the block grows if its end is less than 128 bytes in front of the limit. The run is
// the step behind the plain bytes.
TEST(RtfRoom, PlainBytesGrowTheBlockStepByStep) {
  EXPECT_TRUE(FillsTheBlock(872, 2048));
  EXPECT_TRUE(FillsTheBlock(896, 3072));
  EXPECT_FALSE(FillsTheBlock(896, 2048));
  EXPECT_TRUE(FillsTheBlock(1896, 3072));
  EXPECT_TRUE(FillsTheBlock(1920, 4096));
  EXPECT_FALSE(FillsTheBlock(1920, 3072));
  EXPECT_TRUE(FillsTheBlock(2920, 4096));
  EXPECT_TRUE(FillsTheBlock(2944, 5120));
  EXPECT_FALSE(FillsTheBlock(2944, 4096));
  EXPECT_TRUE(FillsTheBlock(103272, 104448));
  EXPECT_TRUE(FillsTheBlock(103296, 105472));
}

// Bytes that no code page takes may stand up to the limit, and the steps behind them grow the
// block.
TEST(RtfRoom, PlainBytesBehindARunCatchUp) {
  const std::string run = EuroRun(256);
  const std::string html = Repeat(kEuro, 256);
  for (const size_t plain : {1U, 2U, 3U, 127U, 128U, 895U, 896U, 897U, 1024U, 5000U}) {
    const std::string dots(plain, '.');
    ASSERT_EQ(Body(run + dots + "\\u8364?x"), html + dots + "&#8364;x") << plain;
  }
}

// Failures ----------------------------------------------------------------------------------------

const std::string kRichMail =
    "{\\rtf1\\ansi\\ansicpg1252 \\deff0{\\fonttbl{\\f0\\fcharset0 Arial;}{\\f1\\fcharset128 "
    "MS Gothic;}} \\f1 x{\\*\\htmltag19 <html>}\\htmlrtf {\\f0 \\lang1033\\htmlrtf0 text" +
    std::string(3000, '.') + Repeat("{\\f0 {\\f1 ", 100) + Repeat("\\'82\\'a0", 700) +
    "{\\fonttbl{\\f2\\fcharset204 Arial;}}\\f2 \\'c0\\u8364?\\par}" +
    "{\\*\\mhtmltag5 a}{\\*\\htmltag5 b}";

const std::string kRichHtml =
    "<html>text" + std::string(3000, '.') + Repeat("&#x3042;", 700) + "&#x410;&#8364;\r\na";

// With every allocation failing in turn: -1 and the text as it was, but for two that are not
// needed, the conversion of a run, whose bytes then stand for themselves, and the last trim.
TEST(RtfFailures, EveryAllocation) {
  PlainKernelUsageRecord before;
  PlainKernelUsage(&before);
  ASSERT_EQ(HtmlOf(kRichMail), kRichHtml);
  PlainKernelUsageRecord after;
  PlainKernelUsage(&after);
  const uint64_t calls = after.allocationCalls - before.allocationCalls - 1;  // less the text's
  ASSERT_GT(calls, 8U);

  const std::string rawHtml =
      "<html>text" + std::string(3000, '.') + Repeat("\x82\xA0", 700) + "&#x410;&#8364;\r\na";
  uint64_t raw = 0;
  uint64_t whole = 0;
  for (uint64_t n = 1; n <= calls; ++n) {
    SizedBytes text = BytesOf(kRichMail);
    const char* const block = text.data;
    PlainKernelFailAt(PlainKernelFaultMemory, n);
    const int32_t status = RtfToHtml(text);
    PlainKernelFailAt(PlainKernelFaultMemory, 0);
    if (status == 1) {
      raw += text.text() == rawHtml ? 1 : 0;
      whole += text.text() == kRichHtml ? 1 : 0;
    } else {
      ASSERT_EQ(status, -1) << n;
      ASSERT_EQ(text.data, block) << n;
      ASSERT_EQ(text.bytes(), kRichMail) << n;
    }
  }
  EXPECT_EQ(raw, 1U);
  EXPECT_EQ(whole, 1U);
}

TEST(RtfFailures, TheTrimIsTheLastAllocation) {
  PlainKernelFailAt(PlainKernelFaultMemory, 4);  // text, output, stack, trim
  EXPECT_EQ(Body("abc"), "abc");
  PlainKernelFailAt(PlainKernelFaultMemory, 0);
}

// Nothing stays of a document that fails half way.
TEST(RtfFailures, DamageBehindMuch) {
  EXPECT_EQ(ConvertRtf(kRichMail + "{\\fonttbl{\\f9\\fcharset0 Arial;}\\").status, -9);
}

}  // namespace
}  // namespace tarn
