// Code pages that only Windows has, and what the system refuses to tell of others.
#include <gtest/gtest.h>
#include <windows.h>

#include "CodePageText.h"

namespace tarn::platform {
namespace {

TEST(CodePagesOfWindows, AreAllThatTheSystemHas) {
  // EUC for Japanese, which every Windows has.
  EXPECT_TRUE(IsCodePageSupported(20932));
  EXPECT_EQ(Decode(20932, "a\xA4\xA2"), u"a\u3042");
  EXPECT_EQ(Encode(20932, u"a\u3042"), (Encoded{"a\xA4\xA2", false}));
  EXPECT_EQ(Encode(20932, u"\u0E01"), (Encoded{"?", true}));
  EXPECT_TRUE(IsCodePageSupported(10001));
  EXPECT_EQ(Decode(10001, "a\x82\xA0"), u"a\u3042");
}

// Asked for the flag, the system refuses this page.
TEST(CodePagesOfWindows, IncludeUtf7) {
  EXPECT_TRUE(IsCodePageSupported(65000));
  EXPECT_EQ(Decode(65000, "Hi +ZeU-"), u"Hi \u65E5");
  EXPECT_EQ(Encode(65000, u"\u65E5"), (Encoded{"+ZeU-", false}));
  EXPECT_EQ(Encode(65000, std::u16string(1, char16_t{0xD800})).usedDefault, true);
}

TEST(CodePagesOfWindows, ApproximateByLettersThatLookAlike) {
  EXPECT_EQ(Encode(1252, u"\u0100"), (Encoded{"A", false}));
  EXPECT_EQ(Encode(28597, u"\u2018\u2019"), (Encoded{"\'\'", false}));
  EXPECT_EQ(Encode(1255, u"\u00A4"), (Encoded{"\xA4", false}));
  EXPECT_EQ(Encode(936, u"\uFFE9"), (Encoded{"?", true}));
}

TEST(CodePagesOfWindows, TakeTheMachinesForThatOfOtherPrograms) {
  EXPECT_EQ(AnsiCodePage(), GetACP());
}

}  // namespace
}  // namespace tarn::platform
