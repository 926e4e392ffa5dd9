// Code page 65001 in both directions.
#include <gtest/gtest.h>

#include "CodePageText.h"

namespace tarn::platform {
namespace {

TEST(Utf8Decoding, ReadsSequencesOfEveryLength) {
  EXPECT_EQ(Decode(65001, Bytes("\0A\x7F")), Units(u"\0A\x7F"));
  EXPECT_EQ(Decode(65001, "\xC2\x80\xDF\xBF"), u"\u0080\u07FF");
  EXPECT_EQ(Decode(65001, "\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"),
            u"\u0800\uD7FF\uE000\uFFFF");
  EXPECT_EQ(Decode(65001, "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"), u"\U00010000\U0010FFFF");
  EXPECT_EQ(Decode(65001, "\xEF\xBB\xBFx"), u"\uFEFFx");
}

TEST(Utf8Decoding, GivesOneReplacementForATruncatedSequence) {
  EXPECT_EQ(Decode(65001, "\xC3"), u"\uFFFD");
  EXPECT_EQ(Decode(65001, "\xE2\x82"), u"\uFFFD");
  EXPECT_EQ(Decode(65001, "\xF0\x9F\x98"), u"\uFFFD");
  EXPECT_EQ(Decode(65001, "\xE2\x82z"), u"\uFFFDz");
  EXPECT_EQ(Decode(65001, "\xF0\x9F\xC3\xA9"), u"\uFFFD\u00E9");
  EXPECT_EQ(Decode(65001, Bytes("\xC3\0")), Units(u"\uFFFD\0"));
}

TEST(Utf8Decoding, GivesAReplacementForEachByteThatBeginsNothing) {
  EXPECT_EQ(Decode(65001, "a\x80\xBFz"), u"a\uFFFD\uFFFDz");
  EXPECT_EQ(Decode(65001, "\xFE\xFF\xF8\x88"), u"\uFFFD\uFFFD\uFFFD\uFFFD");
  // Overlong forms, surrogates and values beyond U+10FFFF fail at their first or second byte.
  EXPECT_EQ(Decode(65001, "\xC0\x80"), u"\uFFFD\uFFFD");
  EXPECT_EQ(Decode(65001, "\xC1\xBF"), u"\uFFFD\uFFFD");
  EXPECT_EQ(Decode(65001, "\xE0\x9F\xBF"), u"\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(Decode(65001, "\xED\xA0\x80"), u"\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(Decode(65001, "\xF0\x8F\xBF\xBF"), u"\uFFFD\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(Decode(65001, "\xF4\x90\x80\x80"), u"\uFFFD\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(Decode(65001, "\xF5\x80"), u"\uFFFD\uFFFD");
}

TEST(Utf8Encoding, WritesSequencesOfEveryLength) {
  EXPECT_EQ(Encode(65001, Units(u"\0A\x7F")), (Encoded{Bytes("\0A\x7F"), false}));
  EXPECT_EQ(Encode(65001, u"\u0080\u07FF"), (Encoded{"\xC2\x80\xDF\xBF", false}));
  EXPECT_EQ(Encode(65001, u"\u0800\uD7FF\uE000\uFFFD"),
            (Encoded{"\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBD", false}));
  EXPECT_EQ(Encode(65001, Units(u"\xFFFE\xFFFF")), (Encoded{"\xEF\xBF\xBE\xEF\xBF\xBF", false}));
  EXPECT_EQ(Encode(65001, u"\U00010000\U0010FFFF"),
            (Encoded{"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", false}));
}

TEST(Utf8Encoding, ReplacesLoneSurrogates) {
  EXPECT_EQ(Encode(65001, Units(u"\xD83D")), (Encoded{"\xEF\xBF\xBD", true}));
  EXPECT_EQ(Encode(65001, Units(u"\xDE00")), (Encoded{"\xEF\xBF\xBD", true}));
  EXPECT_EQ(Encode(65001, Units(u"\xD83Dz")), (Encoded{"\xEF\xBF\xBDz", true}));
  EXPECT_EQ(Encode(65001, Units(u"\xDE00\xD83D")), (Encoded{"\xEF\xBF\xBD\xEF\xBF\xBD", true}));
  EXPECT_EQ(Encode(65001, Units(u"\xD83D\xD83D\xDE00")),
            (Encoded{"\xEF\xBF\xBD\xF0\x9F\x98\x80", true}));
}

TEST(Utf8Sizes, CountAndFitExactly) {
  EXPECT_EQ(BytesToUtf16(65001, "\xF0\x9F\x98\x80x", {}), 3u);
  char16_t units[3] = {u'#', u'#', u'#'};
  EXPECT_EQ(BytesToUtf16(65001, "\xF0\x9F\x98\x80", {units, 1}), 0u);
  EXPECT_EQ(units[1], u'#');
  EXPECT_EQ(BytesToUtf16(65001, "\xF0\x9F\x98\x80", {units, 2}), 2u);
  EXPECT_EQ(units[0], 0xD83D);
  EXPECT_EQ(units[1], 0xDE00);
  EXPECT_EQ(units[2], u'#');

  EXPECT_EQ(Utf16ToBytes(65001, u"\u20AC", {}).size, 3u);
  char bytes[4] = {'#', '#', '#', '#'};
  EXPECT_EQ(Utf16ToBytes(65001, u"\u20AC", {bytes, 2}).size, 0u);
  EXPECT_EQ(bytes[2], '#');
  EXPECT_EQ(Utf16ToBytes(65001, u"\u20AC", {bytes, 3}).size, 3u);
  EXPECT_EQ(std::string(bytes, 4), "\xE2\x82\xAC#");
}

}  // namespace
}  // namespace tarn::platform
