#include <gtest/gtest.h>

#include <string>

#include "archive/text/BodyText.h"

namespace tarn::archive {
namespace {

std::string Text(const std::string& body) {
  return TextOfRtf(
      "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0 Arial;}{\\f1\\fcharset2 "
      "Symbol;}}" +
      body + "}");
}

TEST(TextOfRtfTest, ShowsParagraphsAndLines) {
  EXPECT_EQ(Text("\\pard One\\par Two\\line three\\tab four\\par\\par\r\n"),
            "One\nTwo\nthree\tfour\n");
  EXPECT_EQ(Text("a\\page b\\sect c"), "a\nb\nc\n");
  EXPECT_EQ(Text(""), "");
  EXPECT_EQ(TextOfRtf(""), "");
}

TEST(TextOfRtfTest, ShowsCharacters) {
  EXPECT_EQ(Text("\\ldblquote\\'e9\\u8364?\\rdblquote\\~\\_\\{\\}"),
            "“é€”\xC2\xA0\xE2\x80\x91{}\n");
}

TEST(TextOfRtfTest, ShowsTheMarksOfLists) {
  EXPECT_EQ(Text("{\\pntext\\f1\\'b7\\tab}one\\par{\\listtext 2.\\tab}two\\par"
                 "{\\f1\\u-3913 ?\\u-3850?}"),
            "•\tone\n2.\ttwo\n•ö\n");
}

TEST(TextOfRtfTest, ShowsRowsOfTables) {
  EXPECT_EQ(Text("\\trowd a\\cell b\\cell\\row\\trowd c\\cell d\\cell\\row"), "a\tb\nc\td\n");
}

TEST(TextOfRtfTest, ShowsTheAddressOfALink) {
  const auto link = [](const std::string& instruction, const std::string& shown) {
    return Text("{\\field{\\*\\fldinst{" + instruction + "}}{\\fldrslt{\\ul " + shown + "}}}.");
  };
  EXPECT_EQ(link("HYPERLINK \"http://example.com/a\"", "here"), "here <http://example.com/a>.\n");
  EXPECT_EQ(link(" hyperlink http://example.com/ ", "example.com"), "example.com.\n");
  EXPECT_EQ(link("HYPERLINK \"mailto:Ann@example.com\"", "ann@example.com"), "ann@example.com.\n");
  EXPECT_EQ(link("HYPERLINK \\\\l \"mark\"", "here"), "here.\n");
  EXPECT_EQ(link("PAGE", "7"), "7.\n");
  EXPECT_EQ(link("HYPERLINK \"x:\"", ""), "<x:>.\n");
}

TEST(TextOfRtfTest, ShowsTheTextOfDrawings) {
  const std::string make = "{\\*\\shpinst\\shpleft0{\\sp{\\sn x}{\\sv 1}}";
  EXPECT_EQ(Text("a{\\shp" + make + "{\\shptxt \\pard BOX\\par}}{\\shprslt other}}b"),
            "a\nBOX\nb\n");
  EXPECT_EQ(Text("a{\\shp" + make + "{\\shptxt BOX}}}b"), "a\nBOX\nb\n");
  EXPECT_EQ(Text("a{\\shp" + make + "}{\\shprslt other}}b"), "aotherb\n");
  EXPECT_EQ(Text("a{\\shp" + make + "{\\shptxt x{\\shp" + make +
                 "{\\shptxt y}}{\\shprslt no}}z}}{\\shprslt no}}b"),
            "a\nx\ny\nz\nb\n");
  EXPECT_EQ(Text("a{\\v{\\shp" + make + "{\\shptxt no}}}}b{\\shptxt c}"), "abc\n");
}

TEST(TextOfRtfTest, PrefersTheTextInUnicode) {
  EXPECT_EQ(Text("x{\\upr{a?b}{\\*\\ud{a\\u8364 ?b}}}y"), "xa€by\n");
  EXPECT_EQ(Text("x{\\upr{a{\\upr{b?}{\\*\\ud{c}}}?}{\\*\\ud{d}}}y"), "xdy\n");
  EXPECT_EQ(Text("x{\\*\\ud{d}}y"), "xdy\n");
  EXPECT_EQ(Text("x{\\upr{\\field{\\*\\fldinst HYPERLINK http://z}{\\fldrslt a{\\*\\ud b}}}}y"),
            "xb <http://z>y\n");
}

TEST(TextOfRtfTest, LeavesOutWhatIsHidden) {
  EXPECT_EQ(Text("a{\\v hidden}b\\v c\\v0 d\\v e\\plain f{\\deleted g}"), "abdf\n");
}

TEST(TextOfRtfTest, ReadsTheRtfOfAWrappedBody) {
  EXPECT_EQ(TextOfRtf("{\\rtf1\\ansi\\fromhtml1{\\*\\htmltag84 <b>}\\htmlrtf {\\b \\htmlrtf0 bold"
                      "\\htmlrtf\\par}\\htmlrtf0 end}"),
            "bold\nend\n");
}

TEST(TextOfRtfTest, ShowsWhatIsNoRtfAsItIs) {
  EXPECT_EQ(TextOfRtf("Just text\xE9\n\n"), "Just texté\n");
  EXPECT_EQ(TextOfRtf("\n {\\rtf1 text}"), "text\n");
}

TEST(TextOfRtfTest, MarksOfSymbolFontsAreCharacters) {
  EXPECT_EQ(TextOfRtf("{\\rtf1{\\fonttbl{\\f0 A;}{\\f1\\fcharset2 Symbol;}}"
                      "\\f1\\'a7\\'a8\\'b7\\'d8\\'e0\\'f0\\'fc\\'80 a\\f0 \\'e9}"),
            "▪○•➢→→✓• aé\n");
}

}  // namespace
}  // namespace tarn::archive
