#include "rtf/CodePageForText.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/KernelUsage.h"

namespace tarn {
namespace {

using test::AllocationCalls;

// Asks for a text whose heap block ends where it does.
uint32_t Find(std::u16string_view text) {
  const std::vector<char16_t> units(text.begin(), text.end());
  return FindCodePageForText({units.data(), units.size()});
}

// With scratch of exactly the documented size.
bool RoundTrips(std::u16string_view text, uint32_t codePage, size_t byteScratch) {
  std::vector<char16_t> wide(text.size());
  std::vector<char> bytes(byteScratch);
  return RoundTripsInCodePage(text, codePage, wide.data(), bytes);
}

TEST(FindCodePageForText, TheFirstCodePageThatCarriesTheText) {
  EXPECT_EQ(Find(u"Plain text"), 1252u);
  EXPECT_EQ(Find(u"R\u00E9union \u00E0 Paris"), 1252u);
  EXPECT_EQ(Find(u"\u20AC 5"), 1252u);
  EXPECT_EQ(Find(u"\uF041\uF0FF"), 42u);
  EXPECT_EQ(Find(u"\u65E5\u672C"), 932u);
  EXPECT_EQ(Find(u"\uD55C\uAE00"), 949u);
  EXPECT_EQ(Find(u"\u1100"), 1361u);
  EXPECT_EQ(Find(u"\u0386"), 1253u);
  EXPECT_EQ(Find(u"\u011F"), 1254u);
  EXPECT_EQ(Find(u"\u01A1"), 1258u);
  EXPECT_EQ(Find(u"\u05D0"), 1255u);
  EXPECT_EQ(Find(u"\u0639"), 1256u);
  EXPECT_EQ(Find(u"\u0101"), 1257u);
  EXPECT_EQ(Find(u"\u0402"), 1251u);
  EXPECT_EQ(Find(u"\u0E01"), 874u);
  EXPECT_EQ(Find(u"\u011B"), 1250u);
}

// The Japanese page has both alphabets and comes earlier.
TEST(FindCodePageForText, PlainGreekAndRussianLettersAreJapanese) {
  EXPECT_EQ(Find(u"\u03A9"), 932u);
  EXPECT_EQ(Find(u"\u0416\u0443\u043A\u043E\u0432"), 932u);
  EXPECT_EQ(Find(u"\u03A9\u0436"), 932u);
}

TEST(FindCodePageForText, CodePagesThatAreNotForTextAreNotTried) {
  EXPECT_EQ(Find(u"\u4EEC"), kNoCodePage);                    // 936 has it
  EXPECT_EQ(Find(u"\u2264\u00E9\u2500\u2561"), kNoCodePage);  // 437 has them
}

TEST(FindCodePageForText, AnApproximationDoesNotCarry) {
  EXPECT_EQ(Find(u"\uFF21"), 932u);  // a full-width A is an A in 1252
}

TEST(FindCodePageForText, ATextOfTwoScriptsMayHaveNone) {
  EXPECT_EQ(Find(u"\u0386\u0416"), kNoCodePage);
  EXPECT_EQ(Find(u"\u0561"), kNoCodePage);
  EXPECT_EQ(Find(u"\xD83D\xDE00"), kNoCodePage);
  EXPECT_EQ(Find(u"\xD83D"), kNoCodePage);
}

TEST(FindCodePageForText, NulIsText) {
  EXPECT_EQ(Find(std::u16string_view(u"a\0\u00E9", 3)), 1252u);
  EXPECT_EQ(Find(std::u16string_view(u"a\0\u0561", 3)), kNoCodePage);
}

TEST(FindCodePageForText, NoTextHasNone) {
  EXPECT_EQ(FindCodePageForText({}), 0xFFFFFFFFu);
  EXPECT_EQ(FindCodePageForText({nullptr, 5}), 0xFFFFFFFFu);
  EXPECT_EQ(FindCodePageForText({u"a", 0}), 0xFFFFFFFFu);
}

TEST(FindCodePageForText, LongTextsAreNoDifferent) {
  for (const size_t length : {15u, 16u, 17u, 18u, 5000u}) {
    EXPECT_EQ(Find(std::u16string(length, u'\u65E5')), 932u) << length;
    EXPECT_EQ(Find(std::u16string(length - 1, u'\u65E5') + u'\u0561'), kNoCodePage) << length;
  }
}

TEST(FindCodePageForText, ACharacterCostsNoAllocation) {
  const uint64_t before = AllocationCalls();
  EXPECT_EQ(Find(u"\u0E01"), 874u);
  EXPECT_EQ(Find(std::u16string(16, u'\u0561')), kNoCodePage);
  EXPECT_EQ(AllocationCalls(), before);
}

TEST(FindCodePageForText, LackOfMemoryHidesNone) {
  const std::u16string text(2000, u'\u00E9');
  PlainKernelFailFrom(PlainKernelFaultMemory, 1);
  EXPECT_EQ(Find(text), 1252u);
  EXPECT_EQ(Find(text + u'\u0416'), kNoCodePage);
}

// Texts are tried in pieces; a pair that lies in two of them is as little carried as any other.
TEST(FindCodePageForText, PiecesAreNoDifferent) {
  for (size_t before = 508; before <= 516; ++before) {
    const std::u16string latin(before, u'\u00E9');
    EXPECT_EQ(Find(latin + u"\u00E9a"), 1252u) << before;
    EXPECT_EQ(Find(latin + u"\U0001F600a"), kNoCodePage) << before;
    EXPECT_EQ(Find(latin + u"\xD83D"), kNoCodePage) << before;
    EXPECT_EQ(Find(std::u16string(before, u'a') + u"\u65E5\u672C"), 932u) << before;
  }
}

TEST(FindCodePageForText, AMegabyteTakesNoMemory) {
  std::u16string text;
  while (text.size() < (1 << 20)) text += u"\u0386\u0416";
  const uint64_t before = AllocationCalls();
  EXPECT_EQ(Find(text), kNoCodePage);
  EXPECT_EQ(AllocationCalls(), before);
}

TEST(RoundTripsInCodePage, TheTextComesBack) {
  EXPECT_TRUE(RoundTrips(u"\u00E9", 1252, 1));
  EXPECT_TRUE(RoundTrips(u"\u65E5\u672C", 932, 4));
  EXPECT_TRUE(RoundTrips(u"\u4EEC", 936, 2));
  EXPECT_TRUE(RoundTrips(std::u16string_view(u"\0", 1), 1252, 1));
}

TEST(RoundTripsInCodePage, TheDefaultCharacterIsNoFailureOfItsOwn) {
  EXPECT_TRUE(RoundTrips(u"a?b", 1252, 3));
  EXPECT_FALSE(RoundTrips(u"a\u0416b", 1252, 3));
}

TEST(RoundTripsInCodePage, AnApproximationDoesNotComeBack) {
  EXPECT_FALSE(RoundTrips(u"\uFF21", 1252, 1));
  EXPECT_FALSE(RoundTrips(u"a\uFF21", 1252, 2));
}

TEST(RoundTripsInCodePage, TheBytesMustFit) {
  EXPECT_FALSE(RoundTrips(u"\u65E5\u672C", 932, 3));
  EXPECT_TRUE(RoundTrips(u"abcde", 1252, 5));
  EXPECT_FALSE(RoundTrips(u"abcdef", 1252, 5));
  EXPECT_FALSE(RoundTrips(u"a", 1252, 0));
}

TEST(RoundTripsInCodePage, ACodePageThatFailsCarriesNothing) {
  EXPECT_FALSE(RoundTrips(u"A", 42, 2));
  EXPECT_FALSE(RoundTrips(u"A", 931, 2));
  EXPECT_FALSE(RoundTrips(u"A", 0, 2));
  EXPECT_FALSE(RoundTrips(u"A", 0xFFFFFFFF, 2));
}

TEST(RoundTripsInCodePage, NoTextIsNotCarried) {
  EXPECT_FALSE(RoundTrips(u"", 1252, 4));
  char16_t wide = 0;
  char byte = 0;
  EXPECT_FALSE(RoundTripsInCodePage({nullptr, 1}, 1252, &wide, {&byte, 1}));
}

}  // namespace
}  // namespace tarn
