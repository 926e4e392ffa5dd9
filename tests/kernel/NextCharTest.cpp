#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tarnbase/Kernel.h"

namespace tarn::test {
namespace {

// Units of the first user-visible character; the text is alone in its memory.
int64_t FirstLength(const std::u16string& text) {
  const std::vector<char16_t> units(text.begin(), text.end());
  return KernelNextChar(units.data(), static_cast<int64_t>(units.size())) - units.data();
}

TEST(NextChar, StepsOverOneUnitOrOnePair) {
  EXPECT_EQ(FirstLength(u"ab"), 1);
  EXPECT_EQ(FirstLength(u"\u4E2D\u6587"), 1);
  EXPECT_EQ(FirstLength(u"\U0001F600x"), 2);
  EXPECT_EQ(FirstLength(std::u16string(2, u'\0')), 1);
}

TEST(NextChar, TakesCombiningMarksOfEveryKindAlong) {
  EXPECT_EQ(FirstLength(u"a\u0301b"), 2);               // Mn
  EXPECT_EQ(FirstLength(u"\u0915\u0903\u0915"), 2);     // Mc
  EXPECT_EQ(FirstLength(u"A\u20DDb"), 2);               // Me
  EXPECT_EQ(FirstLength(u"a\u0301\u0302\u0323b"), 4);   // several
  EXPECT_EQ(FirstLength(u"\u2764\uFE0Fx"), 2);          // variation selector 16
  EXPECT_EQ(FirstLength(u"\u845B\U000E0100x"), 3);      // one written as a pair
  EXPECT_EQ(FirstLength(u"\U0001D157\U0001D165x"), 4);  // a pair after a pair
}

TEST(NextChar, StopsAtOtherCharacters) {
  EXPECT_EQ(FirstLength(u"a\u200Db"), 1);              // joiner (Cf)
  EXPECT_EQ(FirstLength(u"\U0001F44D\U0001F3FB"), 2);  // skin tone (Sk)
  EXPECT_EQ(FirstLength(u"a\u00B4"), 1);               // spacing accent
  EXPECT_EQ(FirstLength(u"\r\n"), 1);
}

TEST(NextChar, KnowsTheEndsOfRanges) {
  EXPECT_EQ(FirstLength(u"a\u02FF"), 1);
  EXPECT_EQ(FirstLength(u"a\u0300"), 2);
  EXPECT_EQ(FirstLength(u"a\u036F"), 2);
  EXPECT_EQ(FirstLength(u"a\u0370"), 1);
  EXPECT_EQ(FirstLength(u"a\u05BE"), 1);  // punctuation between two marks
  EXPECT_EQ(FirstLength(u"a\U000E01EF"), 3);
  EXPECT_EQ(FirstLength(u"a\U000E01F0"), 1);
  EXPECT_EQ(FirstLength(u"a\U0010FFFF"), 1);
}

TEST(NextChar, BeginsWithAnyCharacterEvenAMark) {
  EXPECT_EQ(FirstLength(u"\u0301a"), 1);
  EXPECT_EQ(FirstLength(u"\u0301\u0302a"), 2);
}

TEST(NextChar, TakesALoneSurrogateForACharacter) {
  EXPECT_EQ(FirstLength(u"\xD83D"), 1);
  EXPECT_EQ(FirstLength(u"\xD83Dx"), 1);
  EXPECT_EQ(FirstLength(u"\xDE00\xD83D"), 1);
  EXPECT_EQ(FirstLength(u"a\xDB40"), 1);
  EXPECT_EQ(FirstLength(u"\xD83D\u0301x"), 2);
}

TEST(NextChar, LooksNoFurtherThanTheUnitsLeft) {
  const char16_t text[] = u"a\u0301\u0302";
  EXPECT_EQ(KernelNextChar(text, 2), text + 2);
  EXPECT_EQ(KernelNextChar(text, 1), text + 1);
  EXPECT_EQ(KernelNextChar(text, 0), text);
  EXPECT_EQ(KernelNextChar(text, -1), text);
  const char16_t pair[] = u"\U0001F600";
  EXPECT_EQ(KernelNextChar(pair, 1), pair + 1);
  const char16_t cut[] = u"a\U000E0100";
  EXPECT_EQ(KernelNextChar(cut, 2), cut + 1);
  EXPECT_EQ(KernelNextChar(nullptr, 0), nullptr);
}

TEST(NextChar, WalksALongRunOfMarks) {
  EXPECT_EQ(FirstLength(u"a" + std::u16string(1000000, u'\u0301') + u"b"), 1000001);
}

}  // namespace
}  // namespace tarn::test
