// The pair walker: which bytes open pairs, and what pairs give that nothing maps.
#include <gtest/gtest.h>

#include <string>

#include "CodePageText.h"

namespace tarn::platform {
namespace {

TEST(DoubleByteDecoding, ReadsPairsBetweenSingleBytes) {
  EXPECT_EQ(Decode(932, "a\x82\xA0z"), u"a\u3042z");
  EXPECT_EQ(Decode(932, "\x93\xFA\x96\x7B\xB1\xDF"), u"\u65E5\u672C\uFF71\uFF9F");
  EXPECT_EQ(Decode(936, "\xC4\xE3\xBA\xC3!"), u"\u4F60\u597D!");
  EXPECT_EQ(Decode(949, "\xC7\xD1\xB1\xDB"), u"\uD55C\uAE00");
  EXPECT_EQ(Decode(950, "\xA4\xA4\xA4\xE5"), u"\u4E2D\u6587");
}

TEST(DoubleByteDecoding, ReadsTrailBytesThatAreAscii) {
  EXPECT_EQ(Decode(932, "\x83\x5C\x83\x7D"), u"\u30BD\u30DE");
  EXPECT_EQ(Decode(936, "\x81\x40"), u"\u4E02");
  EXPECT_EQ(Decode(949, "\x81\x41"), u"\uAC02");
  EXPECT_EQ(Decode(950, "\xA5\x5C"), u"\u529F");
}

// Signs where Windows and other tables of these sets disagree.
TEST(DoubleByteDecoding, ReadsPunctuationAsWindowsDoes) {
  EXPECT_EQ(Decode(932, "\x81\x60\x81\x7C\x81\x5C\x81\x61"), u"\uFF5E\uFF0D\u2015\u2225");
  EXPECT_EQ(Decode(932, "\x5C\x7E"), u"\\~");
  EXPECT_EQ(Decode(932, "\x87\x40\xED\x40\xFA\x40"), u"\u2460\u7E8A\u2170");
  EXPECT_EQ(Decode(932, "\xF0\x40"), u"\uE000");
  EXPECT_EQ(Decode(936, "\xA1\xAA\xA1\xA4"), u"\u2014\u00B7");
  EXPECT_EQ(Decode(950, "\xA1\x45\xA2\x41\xA1\xFE"), u"\u2027\u2215\uFF0F");
}

TEST(DoubleByteDecoding, GivesTheDefaultForALeadByteAtTheEnd) {
  EXPECT_EQ(Decode(932, "a\x82"), u"a\u30FB");
  EXPECT_EQ(Decode(936, "a\xC4"), u"a?");
  EXPECT_EQ(Decode(949, "a\xC7"), u"a?");
  EXPECT_EQ(Decode(950, "a\xA4"), u"a?");
  EXPECT_EQ(Decode(1361, "a\x88"), u"a?");
  EXPECT_EQ(Decode(932, "\x82"), u"\u30FB");
}

TEST(DoubleByteDecoding, GivesTheDefaultForALeadByteInFrontOfNul) {
  EXPECT_EQ(Decode(932, Bytes("\x82\0z")), Units(u"\u30FB\0z"));
  EXPECT_EQ(Decode(936, Bytes("\xC4\0\xC4")), Units(u"?\0?"));
  EXPECT_EQ(Decode(949, Bytes("\xFE\0")), Units(u"?\0"));
  EXPECT_EQ(Decode(950, Bytes("\x81\0")), Units(u"?\0"));
  EXPECT_EQ(Decode(1361, Bytes("\xD9\0")), Units(u"?\0"));
}

TEST(DoubleByteDecoding, TakesTwoBytesForAPairThatIsNotMapped) {
  EXPECT_EQ(Decode(932, "\x82 x"), u"\u30FBx");
  EXPECT_EQ(Decode(932, "\x81\xAD\xA0"), u"\u30FB\uF8F0");
  EXPECT_EQ(Decode(936, "\xC4\"y"), u"?y");
  EXPECT_EQ(Decode(949, "\xC9\xFFy"), u"?y");
  EXPECT_EQ(Decode(950, "\xA4\x01y"), u"?y");
  EXPECT_EQ(Decode(1361, "\x84\x41y"), u"?y");
}

TEST(DoubleByteDecoding, KnowsTheEndsOfTheLeadByteRanges) {
  EXPECT_EQ(Decode(932, "\x80x\x81x\x9Fx\xA0x"), u"\u0080x\u300F\u6BCB\uF8F0x");
  EXPECT_EQ(Decode(932, "\xDFx\xE0x\xFCx\xFDx"), u"\uFF9Fx\u70AC\u30FB\uF8F1x");
  EXPECT_EQ(Decode(936, "\x80 \x81 \xFE \xFF "), u"\u20AC ??\uF8F5 ");
  EXPECT_EQ(Decode(949, "\x80 \x81 \xFE \xFF "), u"\u0080 ??\uF8F7 ");
  EXPECT_EQ(Decode(950, "\x80 \x81 \xFE \xFF "), u"\u0080 ??\uF8F8 ");
  EXPECT_EQ(Decode(1361, "\x83 \x84 \xD3 \xD4 "), u"\u0083 ??\uF8EC ");
  EXPECT_EQ(Decode(1361, "\xD7 \xD8 \xDE \xDF "), u"\uF8EF ??\uF8F0 ");
  EXPECT_EQ(Decode(1361, "\xE0 \xF9 \xFA "), u"??\uF8F1 ");
}

TEST(Johab, ReadsSyllables) {
  EXPECT_EQ(Decode(1361, "\xD0\x65\x8B\x69"), u"\uD55C\uAE00");
  EXPECT_EQ(Decode(1361, "\x88\x61\xD3\xBD"), u"\uAC00\uD7A3");
  EXPECT_EQ(Decode(1361, "\x88\x71\x88\x73"), u"\uAC10\uAC11");
  EXPECT_EQ(Decode(1361, "\x88\x72"), u"?");
}

TEST(Johab, ReadsSingleLettersAsConjoining) {
  EXPECT_EQ(Decode(1361, "\x88\x41\xD0\x41"), u"\u1100\u1112");
  EXPECT_EQ(Decode(1361, "\x84\x61\x87\xA1"), u"\u1161\u1175");
  EXPECT_EQ(Decode(1361, "\x84\x42\x84\x5D"), u"\u11A8\u11C2");
  EXPECT_EQ(Decode(1361, "\xDA\xD4\xDA\xD5\xDA\xFE"), u"\u115F\u1114\u11A1");
  EXPECT_EQ(Decode(1361, "\xDA\xA1\xDA\xD3"), u"??");
}

TEST(Johab, ReadsSignsHanjaAndUserUnits) {
  EXPECT_EQ(Decode(1361, "\xD9\x31\xD9\x7E\xD9\x91\xD9\xA0\xD9\xA1\xD9\xFE"),
            u"\u3000\u221A\u223D\uFFE2\u21D2?");
  EXPECT_EQ(Decode(1361, "\xD9\x31\xE0\x31\xF9\xFE"), u"\u3000\u4F3D\u8A70");
  EXPECT_EQ(Decode(1361, "\xD8\x31\xD8\x7E\xD8\x91\xD8\xFE"), u"\uE000\uE04D\uE04E\uE0BB");
  EXPECT_EQ(Decode(1361, "\xD9\x30\xD9\x7F\xD9\x90\xD9\xFF"), u"????");
}

TEST(Symbol, PutsBytesBehindTheControlsIntoThePrivateArea) {
  EXPECT_EQ(Decode(42, Bytes("\0\x1F\x20\x41\xB7\xFF")), Units(u"\0\x1F\uF020\uF041\uF0B7\uF0FF"));
  EXPECT_EQ(Encode(42, Units(u"\0\x1F\uF020\uF041\uF0B7\uF0FF")),
            (Encoded{Bytes("\0\x1F\x20\x41\xB7\xFF"), false}));
}

TEST(Symbol, FailsForOtherUnits) {
  EXPECT_EQ(Encode(42, u"\uF041A"), (Encoded{"", false}));
  EXPECT_EQ(Encode(42, u"\u0020"), (Encoded{"", false}));
  EXPECT_EQ(Encode(42, u"\uF01F"), (Encoded{"", false}));
  EXPECT_EQ(Encode(42, u"\uF100"), (Encoded{"", false}));
  EXPECT_EQ(Utf16ToBytes(42, u"\u3042", {}).size, 0u);
}

}  // namespace
}  // namespace tarn::platform
