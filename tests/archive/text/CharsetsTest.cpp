#include "archive/text/Charsets.h"

#include <gtest/gtest.h>

#include <string>

#include "archive/text/BodyText.h"

namespace tarn::archive {
namespace {

using namespace std::string_literals;

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

TEST(Utf8OfTest, KnowsANameInAnyForm) {
  for (const char* name : {"windows-1252", "Windows-1252", "WINDOWS-1252", "cp1252", "CP-1252",
                           "x-cp1252", "1252", "iso-8859-1", "latin1", "ISO_8859-1", "l1",
                           " \"windows-1252\" ", "cp819", "iso-ir-100", "macos-none"}) {
    EXPECT_EQ(Utf8Of("\x80\xE9", name), "\xE2\x82\xAC\xC3\xA9") << name;
  }
}

TEST(Utf8OfTest, ReadsCodePages) {
  EXPECT_EQ(Utf8Of("\xCF\xF0\xE8\xE2\xE5\xF2", "windows-1251"), "Привет");
  EXPECT_EQ(Utf8Of("\xF0\xD2\xC9\xD7\xC5\xD4", "koi8-r"), "Привет");
  EXPECT_EQ(Utf8Of("\xA4\xF0", "koi8-u"), "єП");
  EXPECT_EQ(Utf8Of("\x8F\xE0\xA8", "cp866"), "При");
  EXPECT_EQ(Utf8Of("\xA1\xB1", "iso-8859-2"), "Ąą");
  EXPECT_EQ(Utf8Of("\xA4", "iso-8859-15"), "€");
  EXPECT_EQ(Utf8Of("\xF9\xEC\xE5\xED", "iso-8859-8-i"), "שלום");
  EXPECT_EQ(Utf8Of("\xD3\xE1\xC7\xE3", "windows-1256"), "سلام");
  EXPECT_EQ(Utf8Of("\xCA\xC7", "tis-620"), "สว");
  EXPECT_EQ(Utf8Of("\x8E", "macintosh"), "é");
  EXPECT_EQ(Utf8Of("\x82", "cp437"), "é");
}

TEST(Utf8OfTest, ReadsChineseAndKorean) {
  EXPECT_EQ(Utf8Of("\xC4\xE3\xBA\xC3", "gb2312"), "你好");
  EXPECT_EQ(Utf8Of("\xC4\xE3\x81\x40", "GBK"), "你丂");
  EXPECT_EQ(Utf8Of("\xC4\xE3\x81\x30\x81\x30", "gb18030"), "你\xC2\x80");
  EXPECT_EQ(Utf8Of("\x95\x32\x82\x36", "gb2312"), "𠀀");
  EXPECT_EQ(Utf8Of("~{Dc:C~}", "hz-gb-2312"), "你好");
  EXPECT_EQ(Utf8Of("\xA7\x41\xA6\x6E", "big5"), "你好");
  EXPECT_EQ(Utf8Of("\xBE\xC8\xB3\xE7", "ks_c_5601-1987"), "안녕");
  EXPECT_EQ(Utf8Of("\x8C\x63", "euc-kr"), "똠");
  EXPECT_EQ(Utf8Of("\x88\x61", "johab"), "가");
}

TEST(Utf8OfTest, ReadsJapaneseMail) {
  EXPECT_EQ(Utf8Of("\x93\xFA\x96\x7B", "shift_jis"), "日本");
  EXPECT_EQ(Utf8Of("\xC6\xFC\xCB\xDC", "euc-jp"), "日本");
  EXPECT_EQ(Utf8Of("\x1B$BF|K\\\x1B(B abc", "iso-2022-jp"), "日本 abc");
  EXPECT_EQ(Utf8Of("\x1B$BF|K\\\x1B(J\\", "ISO-2022-JP"), "日本\\");
  // Half-width kana, the circled digits of NEC, a line that ends in kanji.
  EXPECT_EQ(Utf8Of("\x1B(I1\x1B$B-!\n|", "iso-2022-jp"), "ｱ①\n|");
  // Half a character, and a set that is not read.
  EXPECT_EQ(Utf8Of("\x1B$BF\x1B(B.", "cp50220"), std::string(kReplacement) + ".");
  EXPECT_EQ(Utf8Of("\x1B$(D\"\x1B(B.", "iso-2022-jp"), std::string(kReplacement) + ".");
}

TEST(Utf8OfTest, ReadsUtf7And16) {
  EXPECT_EQ(Utf8Of("Hi +AOk- +2D3eAA-.", "utf-7"), "Hi é 😀.");
  EXPECT_EQ(Utf8Of("\xFF\xFEh\0i\0"s, "utf-16"), "hi");
  EXPECT_EQ(Utf8Of("\xFE\xFF\0h\0i"s, "utf-16"), "hi");
  EXPECT_EQ(Utf8Of("h\0i\0"s, "utf-16"), "hi");
  EXPECT_EQ(Utf8Of("\0h\0i"s, "utf-16"), "hi");
  EXPECT_EQ(Utf8Of("\x3D\xD8\x00\xDE"s, "utf-16le"), "😀");
  EXPECT_EQ(Utf8Of("\xD8\x3D\xDE\x00"s, "utf-16be"), "😀");
  EXPECT_EQ(Utf8Of("h\0\x3D\xD8i\0z"s, "utf-16le"),
            "h" + std::string(kReplacement) + "i" + std::string(kReplacement));
}

TEST(Utf8OfTest, TakesBytesOfNoKnownCharsetForUtf8OrWindows1252) {
  for (const char* name : {"", "us-ascii", "ANSI_X3.4-1968", "x-unknown", "no such charset"}) {
    EXPECT_EQ(Utf8Of("\xC3\xA9\xE2\x82\xAC", name), "é€") << name;
    EXPECT_EQ(Utf8Of("\xE9\x80", name), "é€") << name;
  }
  EXPECT_EQ(Utf8Of("x", "iso-2022-jp,options=1"), "x");
  EXPECT_EQ(Utf8Of("x", std::string(100000, 'n')), "x");
}

TEST(Utf8OfTest, ReplacesWhatDoesNotConvert) {
  EXPECT_EQ(Utf8Of("a\xFF\xC3z", "utf-8"),
            "a" + std::string(kReplacement) + std::string(kReplacement) + "z");
  EXPECT_EQ(Utf8Of("a\x81", "windows-1253"), "a\xC2\x81");
  EXPECT_EQ(Utf8Of("\xC4", "gb18030"), kReplacement);
  EXPECT_EQ(Utf8Of("\xA1", "big5"), kReplacement);
  EXPECT_EQ(Utf8Of("", "gb18030"), "");
}

TEST(Utf8OfTest, DropsTheMarkAtTheFront) {
  EXPECT_EQ(Utf8Of("\xEF\xBB\xBFx", "utf-8"), "x");
  EXPECT_EQ(Utf8Of("\xEF\xBB\xBFx", ""), "x");
}

TEST(Utf8OfTest, JoinsPairsAcrossPieces) {
  // Whatever the length of the pieces that are converted at a time.
  std::string bytes = "x";
  std::string expected = "x";
  for (int i = 0; i < 3000; ++i) {
    bytes += "\x95\x32\x82\x36";
    expected += "𠀀";
  }
  EXPECT_EQ(Utf8Of(bytes, "gb18030"), expected);
  EXPECT_EQ(Utf8Of(bytes.substr(1), "gb18030"), expected.substr(1));
}

TEST(CharsetDecoderTest, BeginsAnewWithEveryText) {
  std::optional<CharsetDecoder> decoder = CharsetDecoder::ForCodePage(936);
  ASSERT_TRUE(decoder.has_value());
  std::string text;
  decoder->append("\xC4", text);
  decoder->append("\xC4\xE3", text);
  EXPECT_EQ(text, std::string(kReplacement) + "你");
  EXPECT_FALSE(CharsetDecoder::ForCodePage(0).has_value());
  EXPECT_FALSE(CharsetDecoder::ForCodePage(42).has_value());
  EXPECT_FALSE(CharsetDecoder::ForCodePage(4000000000u).has_value());
}

TEST(Utf8OfHtmlTest, TakesTheNamedCharset) {
  EXPECT_EQ(Utf8OfHtml({"<meta charset=koi8-r>\xE9", "windows-1252"}), "<meta charset=koi8-r>é");
}

TEST(Utf8OfHtmlTest, TakesTheDocumentsOwn) {
  for (const char* head : {
           "<meta charset=koi8-r>",
           "<META CHARSET = 'KOI8-R' >",
           "<html><head><meta http-equiv=\"Content-Type\" content=\"text/html; charset=koi8-r\">",
           "<!-- <meta charset=utf-8> --><meta charset=\"koi8-r\">",
           "<?xml version=\"1.0\" encoding=\"koi8-r\"?>",
       }) {
    for (const char* named : {"", "us-ascii", "nothing known"}) {
      EXPECT_EQ(Utf8OfHtml({head + "\xF0"s, named}), head + "П"s) << head << named;
    }
  }
}

TEST(Utf8OfHtmlTest, BelievesAMarkMoreThanNames) {
  EXPECT_EQ(Utf8OfHtml({"\xEF\xBB\xBF<meta charset=koi8-r>é", "iso-8859-1"}),
            "<meta charset=koi8-r>é");
  EXPECT_EQ(Utf8OfHtml({"\xFF\xFE<\0p\0"s, "iso-8859-1"}), "<p");
}

TEST(Utf8OfHtmlTest, GuessesWithoutAny) {
  EXPECT_EQ(Utf8OfHtml({"<p>\xE9", ""}), "<p>é");
  EXPECT_EQ(Utf8OfHtml({"<p>é", ""}), "<p>é");
  // Read byte by byte it cannot be true.
  EXPECT_EQ(Utf8OfHtml({"<meta charset=utf-16>é", ""}), "<meta charset=utf-16>é");
  EXPECT_EQ(Utf8OfHtml({"<!-- <meta charset=koi8-r>\xE9", ""}), "<!-- <meta charset=koi8-r>é");
}

}  // namespace
}  // namespace tarn::archive
