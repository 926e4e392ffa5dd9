#include "rtf/RtfToHtml.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "RtfConversion.h"

namespace tarn {
namespace {

using test::Body;
using test::ConvertRtf;
using test::HtmlOf;
using test::InThreeFonts;
using test::kBodyStart;
using test::kThreeFonts;
using test::WithFonts;

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
  EXPECT_EQ(RtfToHtml(text), StatusOk);
  ASSERT_EQ(text.length(), 1U);
  EXPECT_EQ(text.data()[0], '\0');
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

// The byte after each word is passed over, whatever it is.
TEST(RtfHead, OfTwoWordsInARowTheSecondIsNotSeen) {
  const std::string fonts = "{\\fonttbl" + std::string(kThreeFonts) + "} ";
  EXPECT_EQ(HtmlOf("\\ansicpg1252\\deff2" + fonts + kBodyStart + "\\'e9"), "&#xE9;");
  EXPECT_EQ(HtmlOf("\\ansicpg1252 x\\deff2" + fonts + kBodyStart + "\\'e9"), "&#x439;");
  EXPECT_EQ(HtmlOf("\\deff2\\ansicpg1252" + kBodyStart + "\\'e9"), "\xE9");
  EXPECT_EQ(HtmlOf("\\ansicpg1252" + kBodyStart + "a" + kBodyStart + "\\'e9"), "&#xE9;");
  EXPECT_EQ(HtmlOf(fonts + "\\f2\\f0 " + kBodyStart + "\\'e9"), "&#x439;");
}

// A tag that follows a word or the font table at once is not the first.
TEST(RtfHead, ATagRightAfterAWordIsNotSeen) {
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

// A font was seen, though none has that number.
TEST(RtfHead, TheDefaultFontIsNotUsedForAllOnes) {
  EXPECT_EQ(HtmlOf("\\deff2 x\\f4294967295 x" + WithFonts(kThreeFonts, "\\'c0")), "\xC0");
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

}  // namespace
}  // namespace tarn
