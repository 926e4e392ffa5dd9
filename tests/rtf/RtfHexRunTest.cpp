#include "rtf/RtfHexRun.h"

#include <gtest/gtest.h>

#include <string>

#include "RtfConversion.h"
#include "Tarnbase/PlainKernel.h"

namespace tarn {
namespace {

using test::Repeat;

constexpr uint32_t kUnknownCodePage = 4711;

// A run after `before` plain bytes.
struct DecodedRun {
  DecodedRun(std::string_view rtf, uint32_t codePage, uint64_t before = 0)
      : bytes(rtf.begin(), rtf.end()) {
    EXPECT_TRUE(output.start());
    EXPECT_TRUE(output.copyInSteps(std::string(before, '.')));
    std::string_view rest(bytes.data(), bytes.size());
    status = DecodeRtfHexRun(rest, output, codePage);
    taken = static_cast<int64_t>(bytes.size() - rest.size());
    text = std::string(output.from(before));
  }

  std::vector<char> bytes;
  RtfScanOutput output;
  bool status = false;
  int64_t taken = 0;
  std::string text;
};

TEST(RtfHexRun, ACharacterBeyondAsciiIsAReference) {
  const DecodedRun run("\\'e9x", 1252);
  EXPECT_TRUE(run.status);
  EXPECT_EQ(run.text, "&#xE9;");
  EXPECT_EQ(run.taken, 4);
}

TEST(RtfHexRun, ACharacterOfAsciiIsItself) {
  EXPECT_EQ(DecodedRun("\\'41", 1252).text, "A");
  EXPECT_EQ(DecodedRun("\\'7f", 1252).text, "\x7F");
  EXPECT_EQ(DecodedRun("\\'00", 1252).text, std::string(1, '\0'));
  EXPECT_EQ(DecodedRun("\\'3c", 1252).text, "<");
}

TEST(RtfHexRun, NeighboursAreOneText) {
  const DecodedRun run("\\'82\\'a0x", 932);
  EXPECT_EQ(run.text, "&#x3042;");
  EXPECT_EQ(run.taken, 8);
  EXPECT_EQ(DecodedRun("\\'82\\'a0\\'82\\'a2", 932).text, "&#x3042;&#x3044;");
  EXPECT_EQ(DecodedRun("\\'c0\\'e1", 1251).text, "&#x410;&#x431;");
}

TEST(RtfHexRun, AnythingBetweenTwoEscapesEndsTheRun) {
  EXPECT_EQ(DecodedRun("\\'82 \\'a0", 932).taken, 4);
  EXPECT_EQ(DecodedRun("\\'82\\\\a0x", 932).taken, 4);
  EXPECT_EQ(DecodedRun("\\'82''a0x", 932).taken, 4);
}

// Two, three and four digits.
TEST(RtfHexRun, DigitsOfAReference) {
  EXPECT_EQ(DecodedRun("\\'a0", 1252).text, "&#xA0;");
  EXPECT_EQ(DecodedRun("\\'83", 1252).text, "&#x192;");
  EXPECT_EQ(DecodedRun("\\'80", 1252).text, "&#x20AC;");
  EXPECT_EQ(DecodedRun("\\'f0\\'40", 932).text, "&#xE000;");
  EXPECT_EQ(DecodedRun("\\'c2\\'80\\'c3\\'bf", 65001).text, "&#x80;&#xFF;");
  EXPECT_EQ(DecodedRun("\\'c4\\'80", 65001).text, "&#x100;");
  EXPECT_EQ(DecodedRun("\\'e0\\'bf\\'bf\\'e1\\'80\\'80", 65001).text, "&#xFFF;&#x1000;");
  EXPECT_EQ(DecodedRun("\\'ef\\'bf\\'bf", 65001).text, "&#xFFFF;");
}

TEST(RtfHexRun, DigitsOfEitherCase) {
  EXPECT_EQ(DecodedRun("\\'E9\\'eA\\'Eb", 1252).text, "&#xE9;&#xEA;&#xEB;");
  EXPECT_EQ(DecodedRun("\\'4a\\'4A\\'4f\\'4F", 1252).text, "JJOO");
}

// "g" is 16 to "z" is 35, and only the low 8 bits count; other bytes count with their own code.
TEST(RtfHexRun, DigitsThatAreNone) {
  EXPECT_EQ(DecodedRun("\\'0g", kUnknownCodePage).text, "\x10");
  EXPECT_EQ(DecodedRun("\\'0G", kUnknownCodePage).text, "\x10");
  EXPECT_EQ(DecodedRun("\\'zz", kUnknownCodePage).text, "\x53");  // 35 * 16 + 35 = 0x253
  EXPECT_EQ(DecodedRun("\\'Z0", kUnknownCodePage).text, "\x30");
  EXPECT_EQ(DecodedRun("\\'4 ", kUnknownCodePage).text, "\x60");   // 0x40 + 0x20
  EXPECT_EQ(DecodedRun("\\' 4", kUnknownCodePage).text, "\x04");   // 0x200 + 4
  EXPECT_EQ(DecodedRun("\\'}}", kUnknownCodePage).text, "\x4D");   // 0x7D0 + 0x7D
  EXPECT_EQ(DecodedRun("\\'\\'", kUnknownCodePage).text, "\xE7");  // 0x5C0 + 0x27
  EXPECT_EQ(DecodedRun("\\'0\xFF", kUnknownCodePage).text, "\xFF");
  EXPECT_EQ(DecodedRun("\\'@@", kUnknownCodePage).text, "\x40");
  EXPECT_EQ(DecodedRun("\\'[`", kUnknownCodePage).text, "\x10");  // 0x5B0 + 0x60
  EXPECT_EQ(DecodedRun("\\'{:", kUnknownCodePage).text, "\xEA");  // 0x7B0 + 0x3A
  EXPECT_EQ(DecodedRun("\\'//", kUnknownCodePage).text, "\x1F");  // 0x2F0 + 0x2F
}

TEST(RtfHexRun, AnUnknownCodePageLeavesTheBytes) {
  EXPECT_EQ(DecodedRun("\\'e9\\'41\\'80", kUnknownCodePage).text, "\xE9\x41\x80");
  EXPECT_EQ(DecodedRun("\\'e9", UINT32_MAX).text, "\xE9");
}

TEST(RtfHexRun, CodePage0IsThatOfTheSystem) { EXPECT_EQ(DecodedRun("\\'e9", 0).text, "&#xE9;"); }

TEST(RtfHexRun, TheEndCutsTheFirstEscapeOff) {
  const DecodedRun bare("\\'", kUnknownCodePage);
  EXPECT_EQ(bare.text, std::string(1, '\0'));
  EXPECT_EQ(bare.taken, 2);
  const DecodedRun half("\\'e", kUnknownCodePage);
  EXPECT_EQ(half.text, "\xE0");
  EXPECT_EQ(half.taken, 3);
}

// Only a whole escape joins the run.
TEST(RtfHexRun, TheEndCutsAFurtherEscapeOff) {
  EXPECT_EQ(DecodedRun("\\'82\\'a", 932).taken, 4);
  EXPECT_EQ(DecodedRun("\\'82\\'", 932).taken, 4);
  EXPECT_EQ(DecodedRun("\\'82\\", 932).taken, 4);
  EXPECT_EQ(DecodedRun("\\'82", 932).taken, 4);
  EXPECT_EQ(DecodedRun("\\'82\\'a0", 932).taken, 8);
  EXPECT_EQ(DecodedRun("\\'82\\'a0\\'a", 932).taken, 8);
}

TEST(RtfHexRun, TheTextBeforeItStays) {
  DecodedRun run("\\'80", 1252, 3);
  EXPECT_EQ(run.output.from(0), "...&#x20AC;");
}

// With 8 bytes for each unit a run of 256 fits the capacity, one of 257 does not.
TEST(RtfHexRun, TheCapacityFollowsTheBytesOfTheRun) {
  EXPECT_EQ(DecodedRun(Repeat("\\'80", 256), 1252).output.capacity(), 2048U);
  EXPECT_EQ(DecodedRun(Repeat("\\'80", 256), 1252).output.length(), 2048U);
  EXPECT_EQ(DecodedRun(Repeat("\\'80", 257), 1252).output.capacity(), 257U * 8 + 1024);
  EXPECT_EQ(DecodedRun(Repeat("\\'41", 257), 1252).output.capacity(), 257U * 8 + 1024);
  EXPECT_EQ(DecodedRun(Repeat("\\'80", 257), 1252, 100).output.capacity(), 100U + 257 * 8 + 1024);
}

// The bytes themselves ask for room only where they reach the limit.
TEST(RtfHexRun, TheCapacityGrowsAtTheLimit) {
  EXPECT_EQ(DecodedRun(Repeat("\\'80", 1024), kUnknownCodePage).output.capacity(), 2048U);
  EXPECT_EQ(DecodedRun(Repeat("\\'80", 1025), kUnknownCodePage).output.capacity(), 3072U);
  EXPECT_EQ(DecodedRun(Repeat("\\'80", 2048), kUnknownCodePage).output.capacity(), 3072U);
  EXPECT_EQ(DecodedRun(Repeat("\\'80", 2049), kUnknownCodePage).output.capacity(), 4096U);
  EXPECT_EQ(DecodedRun(Repeat("\\'80", 1025), kUnknownCodePage).text, std::string(1025, '\x80'));
}

// Runs on both sides of the length from which on they are converted in a block of their own.
TEST(RtfHexRun, EveryLengthComesOutAlike) {
  for (size_t count = 1; count < 200; ++count) {
    const DecodedRun run(Repeat("\\'e9", count), 1252);
    ASSERT_EQ(run.text, Repeat("&#xE9;", count)) << count;
    ASSERT_EQ(run.taken, static_cast<int64_t>(4 * count));
  }
}

TEST(RtfHexRun, WithoutMemoryForTheConversionTheBytesStay) {
  const std::string bytes = Repeat("\\'e9", 100);
  RtfScanOutput output;
  ASSERT_TRUE(output.start());
  std::string_view rest = bytes;
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_TRUE(DecodeRtfHexRun(rest, output, 1252));
  PlainKernelFailAt(PlainKernelFaultMemory, 0);
  EXPECT_TRUE(rest.empty());
  EXPECT_EQ(output.from(0), std::string(100, '\xE9'));
}

TEST(RtfHexRun, WithoutMemoryForTheOutputItFails) {
  const std::string raw = Repeat("\\'e9", 2000);       // grows with the bytes
  const std::string converted = Repeat("\\'e9", 300);  // and with the references
  for (const auto& [bytes, ordinal] : {std::pair(raw, 1), std::pair(converted, 2)}) {
    RtfScanOutput output;
    ASSERT_TRUE(output.start());
    std::string_view rest = bytes;
    PlainKernelFailAt(PlainKernelFaultMemory, static_cast<uint64_t>(ordinal));
    EXPECT_FALSE(DecodeRtfHexRun(rest, output, 1252));
    PlainKernelFailAt(PlainKernelFaultMemory, 0);
  }
}

}  // namespace
}  // namespace tarn
