#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tarnbase/PlainKernel.h"
#include "rtf/RtfTextWriter.h"
#include "support/FaultSweep.h"

namespace tarn {
namespace {

// One run, from a text whose heap block ends where it does.
struct WrittenRun {
  explicit WrittenRun(std::u16string_view text, uint32_t current = 0, uint32_t ascii = 0)
      : inForce{ascii, current} {
    const std::vector<char16_t> units(text.begin(), text.end());
    status = WriteRtfAsciiRun(output, inForce, {units.data(), units.size()}, &taken);
  }
  std::string text() const { return std::string(output.view()); }

  TrackedBuffer<char> output;
  RtfFontsInForce inForce;
  uint64_t taken = 77777;
  Status status;
};

void ExpectRun(std::u16string_view text, std::string_view written, uint64_t taken) {
  const WrittenRun run(text);
  EXPECT_EQ(run.status, StatusOk);
  EXPECT_EQ(run.text(), written);
  EXPECT_EQ(run.taken, taken);
}

TEST(WriteRtfAsciiRun, TextToTheEndIsWritten) {
  ExpectRun(u"a", "a", 1);
  ExpectRun(u"From: me~\x7F", "From: me~\x7F", 10);
}

TEST(WriteRtfAsciiRun, SpecialsAreEscaped) {
  ExpectRun(u"a{b", "a\\'7bb", 3);
  ExpectRun(u"\\{}", "\\'5c\\'7b\\'7d", 3);
  ExpectRun(u"a\tb\r\n\x01\x1F c", "a\\'09b\\'0d\\'0a\\'01\\'1f c", 9);
}

TEST(WriteRtfAsciiRun, WhatIsBetweenASpecialAndTheEndOfTheRunIsLost) {
  ExpectRun(u"union \u00E0", "", 6);
  ExpectRun(u"a{bc\u00E0", "a\\'7b", 4);
  ExpectRun(u"{\u00E0", "\\'7b", 1);
  ExpectRun(std::u16string_view(u"a\\b\0c", 5), "a\\'5c", 3);
  ExpectRun(u"a\u0080", "", 1);
}

TEST(WriteRtfAsciiRun, NothingIsTakenBeforeOtherText) {
  ExpectRun(u"\u00E0 bc", "", 0);
  ExpectRun(std::u16string_view(u"\0bc", 3), "", 0);
}

TEST(WriteRtfAsciiRun, TheAsciiFontIsSelectedWhereSomethingIsWritten) {
  const WrittenRun plain(u"ab", 5, 3);
  EXPECT_EQ(plain.text(), "\\f3 ab");
  EXPECT_EQ(plain.inForce.current, 3u);
  const WrittenRun special(u"}ab", 5, 3);
  EXPECT_EQ(special.text(), "\\f3 \\'7dab");
  const WrittenRun lost(u"ab\u00E0", 5, 3);
  EXPECT_EQ(lost.text(), "");
  EXPECT_EQ(lost.inForce.current, 5u);
}

TEST(WriteRtfAsciiRun, FontNumbersAreSigned) {
  EXPECT_EQ(WrittenRun(u"a", 0, 0xFFFFFFFF).text(), "\\f-1 a");
  EXPECT_EQ(WrittenRun(u"a", 0, 0x80000000).text(), "\\f-2147483648 a");
  EXPECT_EQ(WrittenRun(u"a", 0, 2147483647).text(), "\\f2147483647 a");
}

TEST(WriteRtfAsciiRun, NoTextIsWrittenAsNothing) {
  const WrittenRun run(u"", 5, 3);
  EXPECT_EQ(run.status, StatusOk);
  EXPECT_EQ(run.text(), "");
  EXPECT_EQ(run.taken, 0u);
  EXPECT_EQ(run.inForce.current, 5u);
  TrackedBuffer<char> output;
  RtfFontsInForce inForce{3, 5};
  EXPECT_EQ(WriteRtfAsciiRun(output, inForce, {}, nullptr), StatusOk);
}

TEST(WriteRtfAsciiRun, NullArgumentsFail) {
  TrackedBuffer<char> output;
  RtfFontsInForce inForce;
  uint64_t taken = 77777;
  EXPECT_EQ(WriteRtfAsciiRun(output, inForce, {nullptr, 1}, &taken), StatusNullArgument);
  EXPECT_EQ(WriteRtfAsciiRun(output, inForce, u"a", nullptr), StatusNullArgument);
  EXPECT_EQ(output.length(), 0u);
}

TEST(WriteRtfAsciiRun, AFailedConversionIsReported) {
  PlainKernelFailAt(PlainKernelFaultText, 1);
  const WrittenRun first(u"ab{cd");
  EXPECT_EQ(first.status, StatusPathToUtf8Failed);
  EXPECT_EQ(first.text(), "");
  EXPECT_EQ(first.taken, 0u);
  PlainKernelFailAt(PlainKernelFaultText, 2);
  const WrittenRun second(u"ab{cd");
  EXPECT_EQ(second.status, StatusPathToUtf8Failed);
  EXPECT_EQ(second.text(), "ab\\'7b");
  PlainKernelFailAt(PlainKernelFaultText, 3);
  EXPECT_EQ(WrittenRun(u"ab{cd").status, StatusOk);
}

TEST(WriteRtfAsciiRun, NothingCollectedIsNotConverted) {
  PlainKernelFailAt(PlainKernelFaultText, 1);
  EXPECT_EQ(WrittenRun(u"{}\\", 5, 3).text(), "\\f3 \\'7b\\'7d\\'5c");
  EXPECT_EQ(WrittenRun(u"lost\u00E0").status, StatusOk);
}

TEST(WriteRtfAsciiRun, WithoutMemoryItFails) {
  const auto round = [](test::FaultedWork& faulted) {
    const WrittenRun run = faulted([] { return WrittenRun(u"ab{cd", 5, 3); });
    if (!faulted.isReached()) {
      EXPECT_EQ(run.text(), "\\f3 ab\\'7bcd");
      return;
    }
    EXPECT_EQ(run.status, StatusOutOfMemory);
    EXPECT_EQ(run.taken, 0u);
  };
  // The output for the font, the scratch for "ab", the scratch for "cd".
  EXPECT_EQ(test::SweepFaults(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom), 3u);
}

TEST(WriteRtfAsciiRun, AnOutputThatCannotGrowIsReported) {
  // Room for the font, for the collected text, or for the escape alone is missing.
  for (const uint64_t room : {0u, 4u, 6u}) {
    TrackedBuffer<char> output(0, 0);
    if (room != 0) {
      ASSERT_NE(output.reserve(room), nullptr);
    }
    RtfFontsInForce inForce{3, 5};
    uint64_t taken = 0;
    // One scratch block comes before the growth unless the font does not fit.
    PlainKernelFailAt(PlainKernelFaultMemory, room == 0 ? 1 : 2);
    output.setLastError(StatusOk);
    EXPECT_EQ(WriteRtfAsciiRun(output, inForce, u"ab{", &taken), StatusOutOfMemory) << room;
    EXPECT_EQ(output.lastError(), StatusOutOfMemory) << room;
    EXPECT_EQ(output.length(), room) << room;
  }
}

}  // namespace
}  // namespace tarn
