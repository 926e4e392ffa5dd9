#include <gtest/gtest.h>

#include <string>

#include "RtfConversion.h"
#include "Tarnbase/PlainKernel.h"
#include "rtf/RtfToHtml.h"
#include "support/FaultSweep.h"
#include "support/PeakMemory.h"

namespace tarn {
namespace {

using test::Body;
using test::BytesOf;
using test::ConvertRtf;
using test::HtmlOf;
using test::InThreeFonts;
using test::kBodyStart;
using test::PeakOf;
using test::Repeat;

// Unicode -----------------------------------------------------------------------------------------

TEST(RtfUnicode, AReferenceReplacesTheCharacterAfterIt) {
  EXPECT_EQ(Body("\\u8364?"), "&#8364;");
  EXPECT_EQ(Body("\\u8364?x"), "&#8364;x");
  EXPECT_EQ(Body("\\u8364"), "&#8364;");
  EXPECT_EQ(Body("\\u8364 "), "&#8364;");
}

// What readers without Unicode show is one byte, whatever it is.
TEST(RtfUnicode, ACharacterOfMoreBytesLeavesItsRest) {
  EXPECT_EQ(Body("\\u8364\\'80"), "&#8364;'80");
  EXPECT_EQ(Body("\\u8364\\u8364?"), "&#8364;u8364?");
  EXPECT_EQ(InThreeFonts("\\f0 {\\f2 \\u8364}\\'c0"), "&#8364;&#x410;");
}

TEST(RtfUnicode, ANegativeNumberIsNotUnderstood) {
  EXPECT_EQ(Body("\\u-4064?"), "&#0;4064?");
  EXPECT_EQ(Body("\\u-"), "&#0;");
  EXPECT_EQ(Body("\\*-x"), "&#0;x");
}

TEST(RtfUnicode, NumbersWrapAndAreSigned) {
  EXPECT_EQ(Body("\\u2147483647?"), "&#2147483647;");
  EXPECT_EQ(Body("\\u2147483648?"), "&#-2147483648;");
  EXPECT_EQ(Body("\\u4294967295?"), "&#-1;");
  EXPECT_EQ(Body("\\u4294967296?"), "&#0;");
  EXPECT_EQ(Body("\\u0000000000000000000065?"), "&#65;");
}

// Room --------------------------------------------------------------------------------------------

const std::string kEuro = "&#x20AC;";

std::string EuroRun(size_t count) { return "\\ansicpg1252 " + Repeat("\\'80", count); }

// A run of 8-byte references can fill the block to its last byte. The step after it gets room
// between 0 and 1024 bytes before the limit, and only that is used.
TEST(RtfRoom, AReferenceAfterALongRunIsCut) {
  EXPECT_EQ(Body(EuroRun(256) + "\\u8364?x"), Repeat(kEuro, 256) + "x");
  EXPECT_EQ(Body(EuroRun(255) + "\\u8364?x"), Repeat(kEuro, 255) + "&#8364;x");
  EXPECT_EQ(Body(EuroRun(255) + "\\u65536?x"), Repeat(kEuro, 255) + "&#65536;x");
  EXPECT_EQ(Body(EuroRun(255) + "\\u165536?x"), Repeat(kEuro, 255) + "&#165536x");
  EXPECT_EQ(Body(EuroRun(255) + "\\u2147483648?x"), Repeat(kEuro, 255) + "&#-21474x");
  EXPECT_EQ(Body(EuroRun(254) + "\\u2147483648?x"), Repeat(kEuro, 254) + "&#-2147483648;x");
}

// The block grows a step later, so every further reference has 1024 bytes more.
TEST(RtfRoom, TheNextReferenceIsWhole) {
  EXPECT_EQ(Body(EuroRun(256) + "\\u8364?\\u8364?"), Repeat(kEuro, 256) + "&#8364;");
  EXPECT_EQ(Body(EuroRun(256) + "{\\u8364?"), Repeat(kEuro, 256) + "&#8364;");
  EXPECT_EQ(Body(EuroRun(256) + "\r\n\\u8364?"), Repeat(kEuro, 256) + "&#8364;");
  EXPECT_EQ(Body(EuroRun(256) + "-\\u8364?"), Repeat(kEuro, 256) + "-&#8364;");
}

// A run of 257 does not fit, gets its own 1024 bytes, and leaves room for all.
TEST(RtfRoom, ARunThatGrowsTheBlockLeavesRoom) {
  EXPECT_EQ(Body(EuroRun(257) + "\\u8364?"), Repeat(kEuro, 257) + "&#8364;");
}

// `before` plain bytes and a run that ends exactly where the block should end if these have made it
// grow to `capacity`; without room for the reference after it.
bool FillsTheBlock(size_t before, size_t capacity) {
  const std::string plain(before, '.');
  const size_t units = (capacity - before) / 8;
  EXPECT_EQ((capacity - before) % 8, 0U);
  const std::string html = Body("\\ansicpg1252 " + plain + Repeat("\\'80", units) + "\\u8364?");
  const std::string run = plain + Repeat(kEuro, units);
  if (html == run) return true;
  EXPECT_EQ(html, run + "&#8364;");
  return false;
}

// Before a step the block grows if its end is less than 128 bytes before the limit. The run is
// the step after the plain bytes.
TEST(RtfRoom, PlainBytesGrowTheBlockStepByStep) {
  EXPECT_TRUE(FillsTheBlock(872, 2048));
  EXPECT_TRUE(FillsTheBlock(896, 3072));
  EXPECT_FALSE(FillsTheBlock(896, 2048));
  EXPECT_TRUE(FillsTheBlock(1896, 3072));
  EXPECT_TRUE(FillsTheBlock(1920, 4096));
  EXPECT_FALSE(FillsTheBlock(1920, 3072));
  EXPECT_TRUE(FillsTheBlock(2920, 4096));
  EXPECT_TRUE(FillsTheBlock(2944, 5120));
  EXPECT_FALSE(FillsTheBlock(2944, 4096));
  EXPECT_TRUE(FillsTheBlock(103272, 104448));
  EXPECT_TRUE(FillsTheBlock(103296, 105472));
}

// Bytes that no code page takes may reach up to the limit, and the steps after them grow the
// block.
TEST(RtfRoom, PlainBytesAfterARunCatchUp) {
  const std::string run = EuroRun(256);
  const std::string html = Repeat(kEuro, 256);
  for (const size_t plain : {1U, 2U, 3U, 127U, 128U, 895U, 896U, 897U, 1024U, 5000U}) {
    const std::string dots(plain, '.');
    ASSERT_EQ(Body(run + dots + "\\u8364?x"), html + dots + "&#8364;x") << plain;
  }
}

// What doubling would take is far more than a text can need.
TEST(RtfRoom, TheBlockDoublesOnlyUpToTwiceTheText) {
  std::string rtf = kBodyStart + "\\ansicpg1252 ";
  while (rtf.size() < 2500000) rtf += "\\'80.";
  SizedBytes text = BytesOf(rtf);
  const uint64_t peak = PeakOf([&] { EXPECT_EQ(RtfToHtml(text), StatusOk); });
  EXPECT_GT(text.length(), 4300000u);
  EXPECT_LT(peak, 2 * rtf.size() + 10000);
}

// Nothing but escapes, in runs: the text becomes nearly twice as long.
TEST(RtfRoom, TheBlockHoldsTwiceTheTextWithoutDoublingAgain) {
  std::string rtf = kBodyStart + "\\ansicpg1252 ";
  while (rtf.size() < 500000) rtf += Repeat("\\'80", 512) + '.';
  SizedBytes text = BytesOf(rtf);
  const uint64_t peak = PeakOf([&] { EXPECT_EQ(RtfToHtml(text), StatusOk); });
  EXPECT_GT(text.length(), 2 * rtf.size() - 1000);
  EXPECT_LT(peak, 2 * rtf.size() + 10000);
}

// Open groups, each under another code page than the one before.
TEST(RtfRoom, GroupsTakeThreeTimesTheirTextAtMost) {
  const std::string rtf = "{\\fonttbl{\\f0\\fcharset0 A;}{\\f1\\fcharset204 B;}} " + kBodyStart +
                          Repeat("{\\f0{\\f1", 300000);
  SizedBytes text = BytesOf(rtf);
  const uint64_t peak = PeakOf([&] { EXPECT_EQ(RtfToHtml(text), StatusOk); });
  EXPECT_GT(peak, 2 * rtf.size());
  EXPECT_LT(peak, 3 * rtf.size() + 10000);
}

// Failures ----------------------------------------------------------------------------------------

const std::string kRichMail =
    "{\\rtf1\\ansi\\ansicpg1252 \\deff0{\\fonttbl{\\f0\\fcharset0 Arial;}{\\f1\\fcharset128 "
    "MS Gothic;}} \\f1 x{\\*\\htmltag19 <html>}\\htmlrtf {\\f0 \\lang1033\\htmlrtf0 text" +
    std::string(3000, '.') + Repeat("{\\f0 {\\f1 ", 100) + Repeat("\\'82\\'a0", 700) +
    "{\\fonttbl{\\f2\\fcharset204 Arial;}}\\f2 \\'c0\\u8364?\\par}" +
    "{\\*\\mhtmltag5 a}{\\*\\htmltag5 b}";

const std::string kRichHtml =
    "<html>text" + std::string(3000, '.') + Repeat("&#x3042;", 700) + "&#x410;&#8364;\r\na";

// With every allocation failing in turn: StatusOutOfMemory and the text as it was, but for two that
// are not needed, the conversion of a run, whose bytes are then written as they are, and the last
// trim.
TEST(RtfFailures, EveryAllocation) {
  const std::string rawHtml =
      "<html>text" + std::string(3000, '.') + Repeat("\x82\xA0", 700) + "&#x410;&#8364;\r\na";
  uint64_t raw = 0;
  uint64_t whole = 0;
  const auto round = [&](test::FaultedWork& faulted) {
    SizedBytes text = BytesOf(kRichMail);
    const char* const block = text.data();
    const Status status = faulted([&] { return RtfToHtml(text); });
    if (!faulted.isReached()) {
      ASSERT_EQ(status, StatusOk);
      ASSERT_EQ(text.text(), kRichHtml);
    } else if (status == StatusOk) {
      ASSERT_TRUE(text.text() == rawHtml || text.text() == kRichHtml);
      raw += text.text() == rawHtml ? 1 : 0;
      whole += text.text() == kRichHtml ? 1 : 0;
    } else {
      ASSERT_EQ(status, StatusOutOfMemory);
      ASSERT_EQ(text.data(), block);
      ASSERT_EQ(text.view(), kRichMail);
    }
  };
  EXPECT_GT(test::SweepFaults(PlainKernelFaultMemory, round), 8U);
  EXPECT_EQ(raw, 1U);
  EXPECT_EQ(whole, 1U);
}

TEST(RtfFailures, TheTrimIsTheLastAllocation) {
  PlainKernelFailAt(PlainKernelFaultMemory, 4);  // text, output, stack, trim
  EXPECT_EQ(Body("abc"), "abc");
  PlainKernelFailAt(PlainKernelFaultMemory, 0);
}

// Nothing stays of a document that fails half way.
TEST(RtfFailures, DamageAfterMuch) {
  EXPECT_EQ(ConvertRtf(kRichMail + "{\\fonttbl{\\f9\\fcharset0 Arial;}\\").status,
            StatusNotSupported);
}

}  // namespace
}  // namespace tarn
