#include "eml/EncodedWords.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "Tarnbase/PlainKernel.h"
#include "eml/ReadMail.h"
#include "support/FaultSweep.h"

namespace tarn {
namespace {

using namespace std::string_view_literals;
using test::MakeText;

// A field after its words were decoded, terminator included; the flag, which starts as false.
struct Decoded {
  std::string bytes;
  bool flag = false;
  Status status;

  explicit Decoded(std::string_view text) {
    SizedBytes field = MakeText(text);
    status = DecodeEncodedWords(field, &flag);
    bytes = field.view();
  }
};

TEST(EncodedWords, AbsentTextStays) {
  SizedBytes field;
  EXPECT_EQ(DecodeEncodedWords(field, nullptr), StatusOk);
  EXPECT_EQ(field.data(), nullptr);
}

TEST(EncodedWords, TextShorterThan14BytesStays) {
  // 12 bytes and a terminator.
  const Decoded shorter("=?big5?Q?a?=");
  EXPECT_EQ(shorter.bytes, "=?big5?Q?a?=\0"sv);
  EXPECT_FALSE(shorter.flag);
  EXPECT_EQ(shorter.status, StatusOk);
}

TEST(EncodedWords, TextOf14BytesWithItsTerminatorIsDecoded) {
  const Decoded decoded("=?utf-8?Q?a?=");
  EXPECT_EQ(decoded.bytes, "a\0"sv);
  EXPECT_TRUE(decoded.flag);
}

TEST(EncodedWords, TextWithoutAWordStays) {
  const Decoded decoded("No word in this text");
  EXPECT_EQ(decoded.bytes, "No word in this text\0"sv);
  EXPECT_FALSE(decoded.flag);
}

TEST(EncodedWords, UnderscoreInQIsABlankAndUtf8SetsTheFlag) {
  const Decoded decoded("=?UTF-8?Q?a_b=C3=A4?=");
  EXPECT_EQ(decoded.bytes, "a b\xC3\xA4\0"sv);
  EXPECT_TRUE(decoded.flag);
}

TEST(EncodedWords, AsciiDecodesAndLeavesTheFlag) {
  const Decoded decoded("=?us-ascii?Q?a=2Cb?=");
  EXPECT_EQ(decoded.bytes, "a,b\0"sv);
  EXPECT_FALSE(decoded.flag);
}

TEST(EncodedWords, BlankBetweenTwoWordsStays) {
  const Decoded decoded("=?utf-8?Q?a?= =?utf-8?Q?b?=");
  EXPECT_EQ(decoded.bytes, "a b\0"sv);
}

TEST(EncodedWords, TextAroundWordsStays) {
  const Decoded decoded("Re: =?utf-8?B?YWJj?= (=?us-ascii?Q?d?=) end");
  EXPECT_EQ(decoded.bytes, "Re: abc (d) end\0"sv);
  EXPECT_TRUE(decoded.flag);
}

TEST(EncodedWords, UnknownCharsetStaysUndecoded) {
  const Decoded decoded("=?koi8-r?Q?abc?=");
  EXPECT_EQ(decoded.bytes, "=?koi8-r?Q?abc?=\0"sv);
  EXPECT_FALSE(decoded.flag);
}

TEST(EncodedWords, SmallLettersAreNotAccepted) {
  EXPECT_EQ(Decoded("=?utf-8?b?YWJj?=").bytes, "=?utf-8?b?YWJj?=\0"sv);
  EXPECT_EQ(Decoded("=?utf-8?q?abc?=").bytes, "=?utf-8?q?abc?=\0"sv);
  EXPECT_EQ(Decoded("=?utf-8?X?abc?=").bytes, "=?utf-8?X?abc?=\0"sv);
}

TEST(EncodedWords, LetterOfTwoBytesIsRefused) {
  EXPECT_EQ(Decoded("=?utf-8?QQ?abc?=").bytes, "=?utf-8?QQ?abc?=\0"sv);
}

TEST(EncodedWords, WordWithAPartMissingStays) {
  EXPECT_EQ(Decoded("=?utf-8 without more").bytes, "=?utf-8 without more\0"sv);
  EXPECT_EQ(Decoded("=?utf-8?Q without").bytes, "=?utf-8?Q without\0"sv);
  EXPECT_EQ(Decoded("=?utf-8?Q?no end of it").bytes, "=?utf-8?Q?no end of it\0"sv);
  EXPECT_EQ(Decoded("a long text =?x?").bytes, "a long text =?x?\0"sv);
  EXPECT_EQ(Decoded("a long text =?x?Q?").bytes, "a long text =?x?Q?\0"sv);
}

TEST(EncodedWords, TextBeforeARefusedWordIsThereTwice) {
  const Decoded decoded("=?utf-8?Q?a?= and =?koi8-r?Q?b?=");
  EXPECT_EQ(decoded.bytes, "a and  and =?koi8-r?Q?b?=\0"sv);
  EXPECT_TRUE(decoded.flag);
}

TEST(EncodedWords, TextBeforeAWordThatIsCutShortIsThereOnce) {
  const Decoded decoded("=?utf-8?Q?a?= and =?utf-8?Q");
  EXPECT_EQ(decoded.bytes, "a and =?utf-8?Q\0"sv);
}

TEST(EncodedWords, RefusedWordEndsTheDecoding) {
  const Decoded decoded("=?koi8-r?Q?b?= =?utf-8?Q?a?=");
  EXPECT_EQ(decoded.bytes, "=?koi8-r?Q?b?= =?utf-8?Q?a?=\0"sv);
  EXPECT_FALSE(decoded.flag);
}

TEST(EncodedWords, EmptyTextOfAWordTakesWhatFollows) {
  // The end of a word is looked for one byte after the start of its text.
  const Decoded decoded(
      "=?utf-8?Q?"
      "?= x =?utf-8?Q?y?=");
  EXPECT_EQ(decoded.bytes, "?\0 x \0?utf-8?Q?y\0"sv);
}

TEST(EncodedWords, RestThatStartsWithANulIsDropped) {
  const Decoded decoded("=?utf-8?Q?a?=\0rest"sv);
  EXPECT_EQ(decoded.bytes, "a\0"sv);
}

TEST(EncodedWords, NulInsideTheRestStays) {
  const Decoded decoded("=?utf-8?Q?a?=b\0c"sv);
  EXPECT_EQ(decoded.bytes, "ab\0c\0"sv);
}

TEST(EncodedWords, NulThatAWordEndsWithIsLostToTheTextAfterIt) {
  EXPECT_EQ(Decoded("=?utf-8?Q?a=00?=").bytes, "a\0\0"sv);
  EXPECT_EQ(Decoded("=?utf-8?Q?a=00?==?utf-8?Q?b?=").bytes, "ab\0"sv);
  EXPECT_EQ(Decoded("=?utf-8?Q?a=00?= =?utf-8?Q?b?=").bytes, "a\0 b\0"sv);
}

TEST(EncodedWords, EqualSignAtTheEndOfQReadsTheEndOfTheWord) {
  // "=?=" has no valid digit: a zero byte, and the text goes on after the sign.
  EXPECT_EQ(Decoded("=?utf-8?Q?ab=?=").bytes, "ab\0\0"sv);
  // "=A" and the "?" of the end: 10 * 16 + 0x3F.
  EXPECT_EQ(Decoded("=?utf-8?Q?ab=A?=").bytes, "ab\xDF\0"sv);
}

TEST(EncodedWords, Base64ThatStopsShortGivesAFullGroup) {
  EXPECT_EQ(Decoded("=?utf-8?B?YWI?=").bytes, "ab\0\0"sv);
  // One character: three bytes, more than the word's text has.
  EXPECT_EQ(Decoded("=?utf-8?B?Y?= xxx").bytes, "`\0\0 xxx\0"sv);
}

TEST(EncodedWords, Latin1BecomesUtf8) {
  const Decoded decoded("=?iso-8859-1?Q?f=FCr?= dich");
  EXPECT_EQ(decoded.bytes, "f\xC3\xBCr dich\0"sv);
  EXPECT_TRUE(decoded.flag);
}

TEST(EncodedWords, WindowsGb2312AndBig5BecomeUtf8) {
  EXPECT_EQ(Decoded("=?Windows-1251?Q?=C0?=").bytes, "\xD0\x90\0"sv);
  EXPECT_EQ(Decoded("=?gb2312?B?xOM=?=").bytes, "\xE4\xBD\xA0\0"sv);
  EXPECT_EQ(Decoded("=?big5?B?pKQ=?=").bytes, "\xE4\xB8\xAD\0"sv);
}

TEST(EncodedWords, EachWordIsConvertedByItsOwnCharset) {
  const Decoded decoded("=?iso-8859-1?Q?=E4?= =?windows-1251?Q?=C0?=");
  EXPECT_EQ(decoded.bytes, "\xC3\xA4 \xD0\x90\0"sv);
}

TEST(EncodedWords, Iso2022JpLeavesTheLengthAsTheConverterDoes) {
  // ESC $ B, 24 22, ESC ( B: U+3042. The terminator is there and is not counted.
  const Decoded decoded("=?iso-2022-jp?Q?=1B$B$\"=1B(B?=");
  EXPECT_EQ(decoded.bytes, "\xE3\x81\x82"sv);
  EXPECT_TRUE(decoded.flag);
  EXPECT_EQ(Decoded("=?iso-2022-jp?Q?=1B$B$\"=1B(B?= x").bytes, "\xE3\x81\x82 x\0"sv);
}

TEST(EncodedWords, WithoutMemoryTheTextStays) {
  const std::string_view text = "a =?iso-8859-1?B?5A==?= b =?utf-8?Q?c?= rest";
  const auto round = [&](test::FaultedWork& faulted) {
    SizedBytes field = MakeText(text);
    const Status status = faulted([&] { return DecodeEncodedWords(field, nullptr); });
    if (faulted.isReached()) {
      EXPECT_EQ(status, StatusOutOfMemory);
      EXPECT_EQ(field.text(), text);
    } else {
      EXPECT_EQ(status, StatusOk);
      EXPECT_EQ(field.view(), "a \xC3\xA4 b c rest\0"sv);
    }
  };
  const uint64_t calls =
      test::SweepFaults(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom);
  EXPECT_GE(calls, 4u);
  EXPECT_LT(calls, 100u);
}

TEST(EncodedWords, FailedConversionLeavesTheText) {
  const std::string_view text = "=?utf-8?Q?a?= =?iso-8859-1?Q?=E4?=";
  SizedBytes field = MakeText(text);
  bool flag = false;
  PlainKernelFailAt(PlainKernelFaultText, 1);
  EXPECT_EQ(DecodeEncodedWords(field, &flag), StatusPathToUtf8Failed);
  EXPECT_EQ(field.text(), text);
}

TEST(EncodedWords, HugeFieldOfWordsIsDecoded) {
  std::string text;
  std::string expected;
  for (int i = 0; i < 5000; ++i) {
    text += "=?iso-8859-1?Q?=E4?= ";
    expected += "\xC3\xA4 ";
  }
  EXPECT_EQ(Decoded(text).bytes, expected + '\0');
}

TEST(EncodedWordText, IsAppendedAfterTheTextOfTheOutput) {
  SizedBytes output = MakeText("x");
  EXPECT_EQ(DecodeEncodedWordText('Q', "a_b", output), StatusOk);
  EXPECT_EQ(output.view(), "xa b\0"sv);
  EXPECT_EQ(DecodeEncodedWordText('B', "Y2Q=", output), StatusOk);
  EXPECT_EQ(output.view(), "xa bcd\0"sv);
}

TEST(EncodedWordText, Base64OfLengthZeroFails) {
  SizedBytes output = MakeText("x");
  EXPECT_EQ(DecodeEncodedWordText('B', "", output), StatusOutOfMemory);
  EXPECT_EQ(output.text(), "x");
}

TEST(EncodedWordText, WithoutMemoryTheOutputStays) {
  SizedBytes output = MakeText("x");
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(DecodeEncodedWordText('Q', "a", output), StatusOutOfMemory);
  EXPECT_EQ(output.view(), "x\0"sv);
}

std::string Parameter(std::string_view value) {
  SizedBytes output;
  EXPECT_EQ(DecodeParameterValue(value, output), StatusOk);
  return std::string(output.view());
}

TEST(ParameterValue, PlainValueIsCopied) {
  EXPECT_EQ(Parameter("a.txt"), "a.txt\0"sv);
  EXPECT_EQ(Parameter(""), "\0"sv);
}

TEST(ParameterValue, WordsAreDecodedOnlyAtItsStart) {
  EXPECT_EQ(Parameter("=?utf-8?Q?a=2Etxt?="), "a.txt\0"sv);
  EXPECT_EQ(Parameter(" =?utf-8?Q?a=2Etxt?="), " =?utf-8?Q?a=2Etxt?=\0"sv);
}

TEST(ParameterValue, ThresholdCountsTheTerminator) {
  EXPECT_EQ(Parameter("=?utf-8?Q?a?="), "a\0"sv);
  EXPECT_EQ(Parameter("=?big5?Q?a?="), "=?big5?Q?a?=\0"sv);
}

TEST(ParameterValue, FailureKeepsTheRawValue) {
  const std::string_view value = "=?iso-8859-1?Q?=E4?=";
  SizedBytes output;
  PlainKernelFailAt(PlainKernelFaultText, 1);
  EXPECT_EQ(DecodeParameterValue(value, output), StatusOk);
  EXPECT_EQ(output.text(), value);
}

TEST(PartName, IsDecodedAndReplacesTheOld) {
  EmlPart part;
  EXPECT_EQ(DecodePartName(part, "=?utf-8?B?YS5wbmc=?="), StatusOk);
  EXPECT_STREQ(part.name.data(), "a.png");
  EXPECT_EQ(DecodePartName(part, "b.png"), StatusOk);
  EXPECT_STREQ(part.name.data(), "b.png");
}

TEST(PartName, ValueOfOneByteIsCopied) {
  EmlPart part;
  EXPECT_EQ(DecodePartName(part, "="), StatusOk);
  EXPECT_STREQ(part.name.data(), "=");
}

TEST(PartName, WithoutMemoryForTheCopyItFails) {
  EmlPart part;
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(DecodePartName(part, "a.png"), StatusOutOfMemory);
  EXPECT_FALSE(part.name.hasBlock());
}

}  // namespace
}  // namespace tarn
