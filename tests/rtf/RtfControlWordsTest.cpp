#include "rtf/RtfControlWords.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "RtfConversion.h"

namespace tarn {
namespace {

using test::Body;

struct WordCase {
  const char* name;
  std::string rtf;
  std::string html;
};

class RtfWord : public ::testing::TestWithParam<WordCase> {};

TEST_P(RtfWord, ComesOutAs) { EXPECT_EQ(Body(GetParam().rtf), GetParam().html); }

std::string NameOf(const ::testing::TestParamInfo<WordCase>& info) { return info.param.name; }

// Every row of the table, with what is written and what happens after the word.
INSTANTIATE_TEST_SUITE_P(
    Row, RtfWord,
    ::testing::Values(
        WordCase{"Tag", "a{\\*\\htmltag64 <p>}b", "a<p>b"},
        WordCase{"TagEatsOneBlank", "{\\*\\htmltag64  <p>}", " <p>"},
        WordCase{"TagWithoutNumber", "{\\*\\htmltag<p>}", "<p>"},
        WordCase{"ReplacedTag", "{\\*\\mhtmltag5 a}b", "ab"},
        WordCase{"ReplacedTagEatsOneBlank", "{\\*\\mhtmltag5  a}b", " ab"},
        WordCase{"Intbl", "a\\intbl b", "a  b"}, WordCase{"IntblPrefix", "\\intblx", " x"},
        WordCase{"Qc", "a\\qc b", "a  b"}, WordCase{"QcPrefix", "\\qcx", " x"},
        WordCase{"Pard", "a\\pard b", "a&nbsp; b"},
        WordCase{"PardPrefix", "\\pardirnatural", "&nbsp;irnatural"},
        WordCase{"Par", "a\\par b", "a\r\nb"}, WordCase{"ParEatsOneBlank", "\\par  b", "\r\n b"},
        WordCase{"ParWithoutBlank", "\\par\\par", "\r\n\r\n"},
        WordCase{"ParPrefix", "\\parx", "\r\nx"}, WordCase{"Tab", "a\\tab  b", "a    b"},
        WordCase{"TabPrefix", "\\tabx", "   x"}, WordCase{"Cbpat2", "a\\cbpat2  b", "a       b"},
        WordCase{"Cbpat2Prefix", "\\cbpat20", "      0"},
        WordCase{"Ltrch", "a\\ltrch  b", "a      b"}, WordCase{"LtrchPrefix", "\\ltrchx", "     x"},
        WordCase{"Rtlch", "a\\rtlch  b", "a b"}, WordCase{"RtlchPrefix", "\\rtlchx", "x"},
        WordCase{"Li", "a\\li720  b", "a b"}, WordCase{"LiWithoutNumber", "\\li b", "b"},
        WordCase{"LiPrefix", "\\linex5", "nex5"}, WordCase{"Sb", "a\\sb100  b", "a b"},
        WordCase{"SbPrefix", "\\sbauto1", "auto1"}, WordCase{"Qr", "a\\qr12  b", "a b"},
        WordCase{"QrPrefix", "\\qrx", "x"}, WordCase{"Font", "a\\f12  b", "a b"},
        WordCase{"FontLeadingZero", "\\f0x", "x"}, WordCase{"Plain", "a\\plain b", "a b"},
        WordCase{"PlainPrefix", "\\plainx", "x"}, WordCase{"Fi", "a\\fi-360  b", "a b"},
        WordCase{"FiWithoutNumber", "\\fi-x", "x"}, WordCase{"HexRun", "a\\'41\\'42b", "aABb"},
        WordCase{"Pntext", "{\\pntext a\\tab b}c", "c"},
        WordCase{"PntextGoesToTheNextBrace", "{\\pntext{a}b}c", "bc"},
        WordCase{"PntextWithoutABrace", "a\\pntext b\\par", "a"},
        WordCase{"HtmlRtf", "a\\htmlrtf\\par b\\htmlrtf0 c", "ac"},
        WordCase{"HtmlRtf1", "a\\htmlrtf1\\par b\\htmlrtf0 c", "ac"},
        WordCase{"OpeningBrace", "a\\{ b", "a{ b"}, WordCase{"ClosingBrace", "a\\} b", "a} b"},
        WordCase{"AnsiCodePage", "\\ansicpg1251  \\'c0", " &#x410;"},
        WordCase{"AnsiCodePagePrefix", "\\ansicpgx", "x"},
        WordCase{"Language", "\\lang1049  \\'c0", " &#x410;"},
        WordCase{"LanguagePrefix", "\\langfe1033 x", "fe1033 x"},
        WordCase{"DefaultFont", "a\\deff12  b", "a b"},
        WordCase{"DefaultFontPrefix", "\\deffx", "x"},
        WordCase{"FontTable", "a{\\fonttbl{\\f0\\fcharset0 Arial;}}b", "ab"},
        WordCase{"FontTablePrefix", "a{\\fonttblx}b", "ab"},
        WordCase{"Unicode", "a\\u8364?b", "a&#8364;b"},
        WordCase{"UnicodeEatsOneBlank", "\\u8364 ?b", "&#8364;b"},
        WordCase{"UnicodeEatsTwoBlanks", "\\u8364  ?b", "&#8364;b"},
        WordCase{"UnicodeTakesAThirdBlankForTheReplacement", "\\u8364   ?b", "&#8364;?b"},
        WordCase{"MinusAfterAnyByte", "a\\x-b", "a&#0;b"},
        WordCase{"AnythingElse", "a\\b b", "a\\b b"},
        WordCase{"AnythingElseAtTheEnd", "a\\", "a\\"}),
    NameOf);

// Where two rows share their first bytes, the first row of the table decides, or no row fits.
INSTANTIATE_TEST_SUITE_P(
    Conflict, RtfWord,
    ::testing::Values(
        WordCase{"PardBeforePar", "\\pard\\plain\\par", "&nbsp;\r\n"},
        WordCase{"ParAfterItsD", "\\par d", "\r\nd"}, WordCase{"LineIsLi", "\\line x", "ne x"},
        WordCase{"LiIsNotLang", "\\li1049 \\ansicpg1252 \\'e9", "&#xE9;"},
        WordCase{"LtrchIsNotLtrpar", "\\ltrpar", "\\ltrpar"},
        WordCase{"LtrIsNoWord", "\\ltrc", "\\ltrc"}, WordCase{"LanIsNoWord", "\\lan", "\\lan"},
        WordCase{"FiWithoutMinus", "\\fi360", "\\fi360"}, WordCase{"FontIsNotFi", "\\f1i-3", "i-3"},
        WordCase{"FMinus", "\\f-1", "&#0;1"}, WordCase{"FsIsNoFont", "\\fs20", "\\fs20"},
        WordCase{"FWithoutDigit", "\\f x", "\\f x"}, WordCase{"FAtTheEnd", "x\\f", "x\\f"},
        WordCase{"FonttbIsNoTable", "\\fonttb", "\\fonttb"},
        WordCase{"FonttblIsNoFont", "{\\fonttbl\\f1}x", "x"},
        WordCase{"PntextIsNotPn", "{\\pn x}", "\\pn x"},
        WordCase{"PlaiIsNoWord", "\\plai", "\\plai"},
        WordCase{"CbpatNeedsItsDigit", "\\cbpat12", "\\cbpat12"},
        WordCase{"QlIsNoWord", "\\ql", "\\ql"}, WordCase{"SaIsNoWord", "\\sa5", "\\sa5"},
        WordCase{"TabIsNotTa", "\\ta", "\\ta"}, WordCase{"RtlparIsNoWord", "\\rtlpar", "\\rtlpar"},
        WordCase{"UnknownDestination", "{\\*\\htmlbase x}", "\\*\\htmlbase x"},
        WordCase{"MhtmlIsNoHtmlTag", "{\\*\\mhtml5 x}", "\\*\\mhtml5 x"},
        WordCase{"HtmlTagWithoutStar", "\\htmltag1 x", "\\htmltag1 x"},
        WordCase{"BraceBeforeMinus", "\\{-5", "{-5"}, WordCase{"HexBeforeMinus", "\\'-5x", "\xD5x"},
        WordCase{"UcIsNoUnicode", "\\uc1", "\\uc1"}, WordCase{"UAtTheEnd", "\\u", "\\u"},
        WordCase{"MinusAtTheThirdByteOnly", "\\-5 \\ab-", "\\-5 \\ab-"},
        WordCase{"TwoBackslashes", "\\\\par", "\\\r\n"},
        WordCase{"BackslashAndMinus", "\\\\-x", "&#0;x"},
        WordCase{"CaseCounts", "\\PAR\\Par", "\\PAR\\Par"}),
    NameOf);

// Each word with its last byte cut off is no word, or another one.
TEST(RtfControlWords, AWordThatTheEndCutsOffIsText) {
  EXPECT_EQ(Body("\\*\\htmlta"), "\\*\\htmlta");
  EXPECT_EQ(Body("\\*\\mhtmlta"), "\\*\\mhtmlta");
  EXPECT_EQ(Body("\\intb"), "\\intb");
  EXPECT_EQ(Body("\\q"), "\\q");
  EXPECT_EQ(Body("\\par"), "\r\n");
  EXPECT_EQ(Body("\\pa"), "\\pa");
  EXPECT_EQ(Body("\\cbpat"), "\\cbpat");
  EXPECT_EQ(Body("\\ltrc"), "\\ltrc");
  EXPECT_EQ(Body("\\rtlc"), "\\rtlc");
  EXPECT_EQ(Body("\\l"), "\\l");
  EXPECT_EQ(Body("\\s"), "\\s");
  EXPECT_EQ(Body("\\fi"), "\\fi");
  EXPECT_EQ(Body("\\pntex"), "\\pntex");
  EXPECT_EQ(Body("\\htmlrt"), "\\htmlrt");
  EXPECT_EQ(Body("\\ansicp"), "\\ansicp");
  EXPECT_EQ(Body("\\def"), "\\def");
}

// What a walk through the whole table gives.
const RtfControlWord* Walk(std::string_view bytes) {
  for (const RtfControlWord& word : kRtfControlWords) {
    if (FitsRtfControlWord(word, bytes)) return &word;
  }
  return nullptr;
}

TEST(RtfControlWords, TheCandidatesOfAByteGiveWhatTheWholeTableGives) {
  for (unsigned second = 0; second < 256; ++second) {
    for (unsigned third = 0; third < 256; ++third) {
      const std::string bytes = {'\\', static_cast<char>(second), static_cast<char>(third)};
      ASSERT_EQ(&FindRtfControlWord(bytes), Walk(bytes)) << second << " " << third;
    }
  }
  std::mt19937 random(5);
  for (const RtfControlWord& word : kRtfControlWords) {
    for (int i = 0; i < 200; ++i) {
      std::string bytes(word.text);
      bytes.resize(1 + random() % bytes.size());
      for (size_t more = random() % 4; more > 0; --more) bytes += "-5dlt \\f"[random() % 8];
      ASSERT_EQ(&FindRtfControlWord(bytes), Walk(bytes)) << bytes;
    }
  }
}

TEST(RtfControlWords, ALoneBackslashIsTheLastRow) {
  EXPECT_EQ(&FindRtfControlWord("\\"), &kRtfControlWords.back());
  EXPECT_EQ(kRtfControlWords.back().written, "\\");
}

}  // namespace
}  // namespace tarn
