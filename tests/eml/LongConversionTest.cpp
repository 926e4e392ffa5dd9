// Texts that are converted in pieces. Their units are written so that pieces of a mebibyte end at
// every place of a unit, and so that some pieces have no place to end at.
#include "eml/LongConversion.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <string_view>

#include "Tarnbase/PlainKernel.h"
#include "eml/Charsets.h"
#include "support/FaultSweep.h"
#include "support/PeakMemory.h"
#include "support/Texts.h"

namespace tarn::test {
namespace {

using namespace std::string_literals;

struct Unit {
  std::string_view bytes;
  std::string_view utf8;
};

// The unit often enough for three pieces and a rest, in `codePage`.
void ExpectConverted(const Unit& unit, uint32_t codePage) {
  const uint64_t count = 7 * kLongText / 2 / unit.bytes.size();
  SizedBytes text = Sized("head" + Repeat(unit.bytes, count));
  const Conversion conversion = ConvertInPieces(text, 4, codePage);
  ASSERT_EQ(conversion.status, StatusOk);
  EXPECT_TRUE(conversion.converted);
  // Not EXPECT_EQ: a difference would print megabytes.
  EXPECT_TRUE(text.view() == "head" + Repeat(unit.utf8, count)) << unit.utf8;
  EXPECT_EQ(text.data()[text.length()], '\0');
}

TEST(LongConversion, SingleBytes) {
  ExpectConverted({"plain", "plain"}, 1252);
  ExpectConverted({"\xE9 abcde", "\xC3\xA9 abcde"}, 1252);
  ExpectConverted({"\x80\xE9", "\xE2\x82\xAC\xC3\xA9"}, 1252);
}

// Trail bytes of ASCII, alone and before and after other ASCII.
TEST(LongConversion, PairsAreNeverCut) {
  ExpectConverted({"\x83\x5C", "\xE3\x82\xBD"}, 932);
  ExpectConverted({"\x83\x5C-----", "\xE3\x82\xBD-----"}, 932);
  ExpectConverted({"--\x83\x5C---", "--\xE3\x82\xBD---"}, 932);
  ExpectConverted({"-----\x83\x5C\x83\x5C", "-----\xE3\x82\xBD\xE3\x82\xBD"}, 932);
}

TEST(LongConversion, TextsThatShrink) {
  ExpectConverted({"\x82\xA0", "\xE3\x81\x82"}, 932);
  ExpectConverted({"\xC3\xA9\xFF", "\xC3\xA9\xEF\xBF\xBD"}, 65001);
}

TEST(LongConversion, DropsOneTrailingNul) {
  SizedBytes text = Sized(Repeat("abc\xE9", kLongText) + "\0"s);
  ASSERT_EQ(ConvertInPieces(text, 0, 1252).status, StatusOk);
  EXPECT_TRUE(text.view() == Repeat("abc\xC3\xA9", kLongText));
  EXPECT_EQ(text.data()[text.length()], '\0');
}

TEST(LongConversion, LeavesTextOfNoCodePage) {
  const std::string source = Repeat("abc\xE9", kLongText);
  SizedBytes text = Sized(source);
  const Conversion conversion = ConvertInPieces(text, 0, 31337);
  EXPECT_EQ(conversion.status, StatusOk);
  EXPECT_FALSE(conversion.converted);
  EXPECT_TRUE(text.view() == source);
}

// Beside the two scratch blocks one call, which makes the text's block as long as it has to be.
TEST(LongConversion, GetsRoomForTheNulAtOnce) {
  const std::string source = Repeat("plain", kLongText);
  SizedBytes text = Sized(source);
  PlainKernelUsageRecord usage = {};
  PlainKernelUsage(&usage);
  const uint64_t before = usage.allocationCalls;
  ASSERT_EQ(ConvertInPieces(text, 0, 1252).status, StatusOk);
  PlainKernelUsage(&usage);
  EXPECT_EQ(usage.allocationCalls - before, 3u);
  EXPECT_TRUE(text.view() == source);
}

// Its two scratch blocks, and the text's own.
TEST(LongConversion, LeavesTheTextAloneWithoutMemory) {
  const std::string source = Repeat("abc\xE9", kLongText);
  const auto round = [&](FaultedWork& faulted) {
    SizedBytes text = Sized(source);
    const Status status = faulted([&] { return ConvertInPieces(text, 0, 1252).status; });
    EXPECT_EQ(status, faulted.isReached() ? StatusOutOfMemory : StatusOk);
    EXPECT_EQ(text.view() == source, faulted.isReached());
  };
  EXPECT_EQ(SweepFaults(PlainKernelFaultMemory, round, FaultKinds::OneAndFrom), 3u);
}

// Six pieces, each converted twice: once for its length, once for the text.
TEST(LongConversion, CutsTheTextWhenUtf8CannotBeMade) {
  const std::string source = Repeat("abcd\xE9", kLongText);
  const auto round = [&](FaultedWork& faulted) {
    SizedBytes text = Sized("head" + source);
    const Status status = faulted([&] { return ConvertInPieces(text, 4, 1252).status; });
    EXPECT_EQ(status, faulted.isReached() ? StatusPathToUtf8Failed : StatusOk);
    if (!faulted.isReached()) return;
    EXPECT_EQ(text.view(), "head");
    EXPECT_EQ(text.data()[4], '\0');
  };
  EXPECT_EQ(SweepFaults(PlainKernelFaultText, round), 12u);
}

TEST(LongConversion, NotForCodePagesThatRememberWhatWasBefore) {
  EXPECT_FALSE(MayConvertInPieces(65000));
  EXPECT_FALSE(MayConvertInPieces(50220));
  EXPECT_FALSE(MayConvertInPieces(50229));
  EXPECT_FALSE(MayConvertInPieces(52936));
  EXPECT_FALSE(MayConvertInPieces(57002));
  EXPECT_FALSE(MayConvertInPieces(57011));
  EXPECT_TRUE(MayConvertInPieces(57012));
  EXPECT_TRUE(MayConvertInPieces(50230));
  EXPECT_TRUE(MayConvertInPieces(1252));
}

TEST(LongConversion, TakesLittleBesideTheText) {
  SizedBytes text = Sized(Repeat("0123456789", 2 * kLongText));
  CharsetRef charset = {CharsetLatin1, 0};
  EXPECT_LT(PeakOf([&] { EXPECT_EQ(ConvertBodyToUtf8(&text, &charset, true), StatusOk); }),
            14 * kLongText);
  EXPECT_EQ(text.length(), 20 * kLongText);
}

}  // namespace
}  // namespace tarn::test
