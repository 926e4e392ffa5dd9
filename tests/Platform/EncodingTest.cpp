// UTF-16 to bytes: defaults, the flag for them, approximations, surrogates.
#include <gtest/gtest.h>

#include "CodePageText.h"

namespace tarn::platform {
namespace {

TEST(Encoding, WritesBytesAndPairs) {
  EXPECT_EQ(Encode(1252, u"\u20AC\u00E9x"), (Encoded{"\x80\xE9x", false}));
  EXPECT_EQ(Encode(1251, u"\u041F\u0440\u0438"), (Encoded{"\xCF\xF0\xE8", false}));
  EXPECT_EQ(Encode(932, u"a\u3042\uFF71"), (Encoded{"a\x82\xA0\xB1", false}));
  EXPECT_EQ(Encode(936, u"\u4F60\u597D\u20AC"), (Encoded{"\xC4\xE3\xBA\xC3\x80", false}));
  EXPECT_EQ(Encode(949, u"\uD55C\uAE00"), (Encoded{"\xC7\xD1\xB1\xDB", false}));
  EXPECT_EQ(Encode(950, u"\u4E2D\u6587"), (Encoded{"\xA4\xA4\xA4\xE5", false}));
  EXPECT_EQ(Encode(1361, u"\uD55C\uAE00\u3000\u8A70"),
            (Encoded{"\xD0\x65\x8B\x69\xD9\x31\xF9\xFE", false}));
  EXPECT_EQ(Encode(1361, u"\u1100\u1161\u11A8\u115F\uE0BB"),
            (Encoded{"\x88\x41\x84\x61\x84\x42\xDA\xD4\xD8\xFE", false}));
}

TEST(Encoding, GivesOneDefaultForAUnitWithoutAByte) {
  EXPECT_EQ(Encode(1252, u"a\u3042b"), (Encoded{"a?b", true}));
  EXPECT_EQ(Encode(1253, u"\u0416"), (Encoded{"?", true}));
  EXPECT_EQ(Encode(874, u"\u05D0"), (Encoded{"?", true}));
  // The default character of 932 is "?" in this direction.
  EXPECT_EQ(Encode(932, u"\u0E01"), (Encoded{"?", true}));
  EXPECT_EQ(Encode(932, u"\u30FB"), (Encoded{"\x81\x45", false}));
  EXPECT_EQ(Encode(949, u"\u0E01"), (Encoded{"?", true}));
  EXPECT_EQ(Encode(1361, u"\u0E01"), (Encoded{"?", true}));
}

TEST(Encoding, TellsAQuestionMarkFromTheDefault) {
  for (const uint32_t page : {1252u, 932u, 1361u, 20127u, 10000u}) {
    EXPECT_EQ(Encode(page, u"?"), (Encoded{"?", false})) << page;
    EXPECT_EQ(Encode(page, u"?\u0E2D"), (Encoded{"??", true})) << page;
  }
}

TEST(Encoding, AFailureUsesNoDefault) {
  char byte = '#';
  for (const uint32_t page : {4u, 1252u}) {  // a page that nobody knows, and no room for two bytes
    const EncodedBytes failed = Utf16ToBytes(page, u"\u3042x", {&byte, 1});
    EXPECT_EQ(failed.size, 0u) << page;
    EXPECT_FALSE(failed.usedDefault) << page;
  }
}

TEST(Encoding, CountsDefaultsWithoutADestination) {
  const EncodedBytes western = Utf16ToBytes(1252, u"a\u3042", {});
  EXPECT_EQ(western.size, 2u);
  EXPECT_TRUE(western.usedDefault);
  const EncodedBytes japanese = Utf16ToBytes(932, u"a\u3042", {});
  EXPECT_EQ(japanese.size, 3u);
  EXPECT_FALSE(japanese.usedDefault);
}

TEST(Encoding, GivesADefaultForEachSurrogate) {
  EXPECT_EQ(Encode(1252, u"\U0001F600"), (Encoded{"??", true}));
  EXPECT_EQ(Encode(936, u"x\U00020000y"), (Encoded{"x??y", true}));
  EXPECT_EQ(Encode(932, Units(u"\xD840")), (Encoded{"?", true}));
  EXPECT_EQ(Encode(950, Units(u"\xDC00")), (Encoded{"?", true}));
  EXPECT_EQ(Encode(1361, u"\U0001F600"), (Encoded{"??", true}));
}

TEST(Encoding, ApproximatesWithoutTheFlag) {
  EXPECT_EQ(Encode(1252, u"\uFF21\uFF5A"), (Encoded{"Az", false}));
  EXPECT_EQ(Encode(1251, u"\uFF11"), (Encoded{"1", false}));
  EXPECT_EQ(Encode(949, u"\u00E9"), (Encoded{"e", false}));
  EXPECT_EQ(Encode(950, u"\u00A5"), (Encoded{"\xA2\x44", false}));
}

TEST(Encoding, DoesNotCompose) {
  EXPECT_EQ(Encode(1258, u"a\u0301"), (Encoded{"a\xEC", false}));
  EXPECT_EQ(Encode(28591, u"e\u0301").bytes.size(), 2u);
}

TEST(Encoding, GivesTheDefaultForNoncharacters) {
  EXPECT_EQ(Encode(1252, Units(u"\xFFFE\xFFFF\xFEFF")), (Encoded{"???", true}));
  EXPECT_EQ(Encode(936, Units(u"\xFFFF\xFEFF")), (Encoded{"??", true}));
}

TEST(Encoding, GivesTheDefaultForInvisibleCharacters) {
  EXPECT_EQ(Encode(1252, u"a\u200Bb"), (Encoded{"a?b", true}));
  EXPECT_EQ(Encode(932, u"\u200D"), (Encoded{"?", true}));
}

}  // namespace
}  // namespace tarn::platform
