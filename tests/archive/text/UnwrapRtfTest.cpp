#include "archive/text/UnwrapRtf.h"

#include <gtest/gtest.h>

#include <string>

#include "archive/text/RtfReader.h"

namespace tarn::archive {
namespace {

using namespace std::string_literals;

// The HTML of a document with this body.
std::string Html(const std::string& body, const std::string& fonts = "") {
  const UnwrappedRtf unwrapped = UnwrapRtf(
      "{\\rtf1\\ansi\\ansicpg1252\\fromhtml1 \\deff0{\\fonttbl" + fonts + "}\r\n" + body + "}");
  EXPECT_EQ(unwrapped.kind, Wrapped::Html);
  return unwrapped.content;
}

std::string Text(const std::string& body) {
  const UnwrappedRtf unwrapped =
      UnwrapRtf("{\\rtf1\\ansi\\ansicpg1252\\fromtext \\deff0{\\fonttbl}" + body + "}");
  EXPECT_EQ(unwrapped.kind, Wrapped::Text);
  return unwrapped.content;
}

Wrapped KindOf(std::string_view rtf) { return UnwrapRtf(rtf).kind; }

TEST(UnwrapRtfTest, TellsWhatIsWrapped) {
  EXPECT_EQ(KindOf("{\\rtf1\\ansi\\fromhtml1 x}"), Wrapped::Html);
  EXPECT_EQ(KindOf("{\\rtf1\\ansi\\fromtext x}"), Wrapped::Text);
  EXPECT_EQ(KindOf("{\\rtf1\\ansi\\fromhtml0 x}"), Wrapped::Nothing);
  EXPECT_EQ(KindOf("{\\rtf1\\ansi x\\fromhtml1 }"), Wrapped::Nothing);
  EXPECT_EQ(KindOf("{\\rtf1\\ansi {\\fromhtml1}}"), Wrapped::Nothing);
  EXPECT_EQ(KindOf("\\rtf1\\fromhtml1 x"), Wrapped::Nothing);
  EXPECT_EQ(KindOf("{\\fromhtml1 x}"), Wrapped::Nothing);
  EXPECT_EQ(KindOf(""), Wrapped::Nothing);
  EXPECT_EQ(KindOf("{\\rtf1"), Wrapped::Nothing);
  EXPECT_EQ(UnwrapRtf("{\\rtf1\\ansi x}").content, "");
}

TEST(UnwrapRtfTest, FindsTheMarkAfterManyWordsAndAShortGroup) {
  EXPECT_EQ(KindOf("{\\rtf1\\ansi\\a\\b\\c\\d\\e\\g\\h\\i\\j\\k\\fromhtml1 x}"), Wrapped::Html);
  EXPECT_EQ(KindOf("{\\rtf1\\ansi{\\*\\generator me}\\fromhtml1 x}"), Wrapped::Html);
  EXPECT_EQ(KindOf("{\\rtf1\\ansi\\a\\b\\c\\d\\e\\g\\h\\i{\\fonttbl}\\fromhtml1 x}"),
            Wrapped::Nothing);
}

TEST(UnwrapRtfTest, TakesTagsAndTheTextBetweenThem) {
  EXPECT_EQ(Html("{\\*\\htmltag19 <html>}{\\*\\htmltag64}{\\*\\htmltag148 <b>}\\htmlrtf {\\b "
                 "\\htmlrtf0 bold{\\*\\htmltag156 </b>}\\htmlrtf }\\htmlrtf0 .{\\*\\htmltag27 "
                 "</html>}"),
            "<html><b>bold</b>.</html>");
}

// The example of MS-OXRTFEX 4.1, in its parts.
TEST(UnwrapRtfTest, LeavesOutWhatIsForReadersOfRtf) {
  EXPECT_EQ(Html("a\\htmlrtf b{\\htmlrtf0 c}d\\htmlrtf0 e"), "ace");
  EXPECT_EQ(Html("a{\\htmlrtf1 b}c"), "ac");
  EXPECT_EQ(Html("\\htmlrtf {\\*\\htmltag84 <i>}\\htmlrtf0 x"), "x");
  EXPECT_EQ(Html("{\\*\\mhtmltag84 <a href=\"x\">}{\\*\\htmltag84 <a href=\"y\">}"),
            "<a href=\"y\">");
  EXPECT_EQ(Html("{\\pntext\\f1\\'b7\\tab}item"), "item");
}

TEST(UnwrapRtfTest, WritesLineEndsTabsAndQuotes) {
  EXPECT_EQ(Html("a\\par b\\line c\\tab d\\\r\ne"), "a\r\nb\r\nc\td\r\ne");
  EXPECT_EQ(Html("{\\*\\htmltag <p\\par\\tab class=x>}"), "<p\r\n\tclass=x>");
  EXPECT_EQ(Html("\\lquote a\\rquote\\ldblquote b\\rdblquote\\bullet\\endash\\emdash\\~\\_c\\-d"),
            "&lsquo;a&rsquo;&ldquo;b&rdquo;&bull;&ndash;&mdash;&nbsp;&shy;cd");
  EXPECT_EQ(Html("\\{\\}\\\\"), "{}\\");
  EXPECT_EQ(Html("a\\cell b\\row c\\sect d\\page e"), "abcde");
}

TEST(UnwrapRtfTest, WritesPlainTextInItsOwnCharacters) {
  EXPECT_EQ(Text("a\\par b\\line c\\tab d"), "a\r\nb\r\nc\td");
  EXPECT_EQ(Text("\\lquote a\\rquote\\ldblquote b\\rdblquote\\bullet\\endash\\emdash\\~\\_c"),
            "‘a’“b”•–—\xC2\xA0\xE2\x80\x91"
            "c");
  EXPECT_EQ(Text("<b>&amp;{\\*\\htmltag <i>}"), "<b>&amp;");
  EXPECT_EQ(Text("a\\htmlrtf b\\htmlrtf0 c"), "ac");
}

TEST(UnwrapRtfTest, TakesBytesOfTheCodePageInForce) {
  const std::string fonts =
      "{\\f0\\fcharset0 Arial;}{\\f1\\fcharset204 Arial Cyr;}{\\f2\\cpg932 Gothic;}"
      "{\\f3\\fcharset2 Symbol;}{\\f4{\\*\\falt Song}\\fcharset134 Sim\\'cb\\'ce;}";
  EXPECT_EQ(Html("\\'e9\\'80 \\f1\\'cf\\'f0{\\f2\\'93\\'fa\\'96\\'7b}\\'e8", fonts), "é€ Пр日本и");
  EXPECT_EQ(Html("\\htmlrtf\\f4\\htmlrtf0\\'c4\\'e3\\plain\\'e9", fonts), "你é");
  EXPECT_EQ(Html("\\f9\\'e9\\f3 J\\'e9", fonts), "éJé");
  EXPECT_EQ(Html("\xE9\xFC", fonts), "éü");
  // The default font's is the document's.
  EXPECT_EQ(Html("{\\*\\htmltag <a title=\"\\'ef\">}\\'f0", "{\\f0\\fcharset204 A;}"),
            "<a title=\"п\">р");
}

TEST(UnwrapRtfTest, JoinsPairsHoweverTheirBytesAreWritten) {
  const std::string fonts = "{\\f0\\fcharset128 Gothic;}";
  EXPECT_EQ(Html("\\'83\\'41", fonts), "ア");
  EXPECT_EQ(Html("\\'83A", fonts), "ア");
  EXPECT_EQ(Html("\\'83\\\\", fonts), "ソ");
  EXPECT_EQ(Html("\\'83\\{\\'83\\}", fonts), "ボマ");
  EXPECT_EQ(Html("\\'83\r\n\\'41", fonts), "ア");
  EXPECT_EQ(Html("\\'83", fonts), "\xEF\xBF\xBD");
}

TEST(UnwrapRtfTest, TakesUnicodeAndPassesOverItsReplacement) {
  EXPECT_EQ(Html("\\u233?x"), "éx");
  EXPECT_EQ(Html("\\u233\\'65x"), "éx");
  EXPECT_EQ(Html("\\u-10179?\\u-8704?x"), "😀x");
  EXPECT_EQ(Html("\\u55357 ?\\u56832 ?x"), "😀x");
  EXPECT_EQ(Html("\\u128512?x"), "😀x");
  EXPECT_EQ(Html("{\\uc0\\u233 a\\uc2\\u26085\\'93\\'fab\\u8212--c}\\u8212\\emdash d"),
            "éa日b—c—d");
  // What is no character may not be eaten: the group's end, a line's, the words that choose text.
  EXPECT_EQ(Html("{\\u233}x\\u233\\par y\\htmlrtf z\\u233\\htmlrtf0 ?w"), "éxé\r\nyw");
  EXPECT_EQ(Html("\\u233\\{x\\u0 ?y"), "éxy");
}

TEST(UnwrapRtfTest, ReplacesHalvesOfPairs) {
  EXPECT_EQ(Html("\\u-10179?x\\u-8704?y\\u-10179?"), "\xEF\xBF\xBDx\xEF\xBF\xBDy\xEF\xBF\xBD");
  EXPECT_EQ(Html("\\u-10179?\\u-10179?\\u-8704?"), "\xEF\xBF\xBD😀");
}

TEST(UnwrapRtfTest, PassesOverWhatIsNoText) {
  EXPECT_EQ(Html("{\\colortbl;\\red0;}{\\stylesheet{\\s0 Normal;}}{\\info{\\title T}}"
                 "{\\*\\generator G;}{\\*\\unknown{\\b nested}text}{\\pict\\wmetafile8 0123}x"),
            "x");
  EXPECT_EQ(Html("{\\header H}{\\footer F}{\\*\\bkmkstart b}x"), "x");
  EXPECT_EQ(Html("{\\field{\\*\\fldinst HYPERLINK \"u\"}{\\fldrslt shown}}"), "shown");
  EXPECT_EQ(Html("\\bin3 }}}x{\\pict\\bin4 {{{{}y"), "xy");
  // Not at the beginning of a group it is a word of no meaning.
  EXPECT_EQ(Html("a\\info b"), "ab");
  EXPECT_EQ(Html("a\\*b"), "ab");
}

TEST(UnwrapRtfTest, TakesDamagedRtfAsFarAsItGoes) {
  EXPECT_EQ(Html("a\\'zb\\'4"), "azb4");
  EXPECT_EQ(Html("a{b{c"), "abc");
  EXPECT_EQ(Html("a}b"), "a");
  EXPECT_EQ(Html("a\\bin99999999999 b"), "a");
  EXPECT_EQ(UnwrapRtf("{\\rtf1\\fromhtml1 a\\").content, "a");
  EXPECT_EQ(UnwrapRtf("{\\rtf1\\fromhtml1 a\\'").content, "a");
  EXPECT_EQ(UnwrapRtf("{\\rtf1\\fromhtml1 a\0b\r\nc}\0\0"s).content, "abc");
  EXPECT_EQ(Html("\\ansicpg99999\\'e9\\ansicpg1251\\'e9"), "éй");
}

TEST(UnwrapRtfTest, FollowsGroupsOfAnyDepthInLittleMemory) {
  constexpr size_t kDepth = 1000000;
  const std::string rtf =
      "{\\rtf1\\fromhtml1 " + std::string(kDepth, '{') + "x" + std::string(kDepth, '}') + "y}";
  RtfReader reader(rtf, RtfPurpose::Html);
  EXPECT_EQ(reader.read(), "xy");
  EXPECT_EQ(reader.mostStackEntries(), 1u);
}

}  // namespace
}  // namespace tarn::archive
