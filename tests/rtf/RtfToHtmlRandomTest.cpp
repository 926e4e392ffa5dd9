// RtfToHtml against its plain description, on documents put together at random, and on documents
// that would take hours or all memory if anything grew with the square of their size.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>

#include "NaiveRtfToHtml.h"
#include "RtfConversion.h"
#include "Tarnbase/PlainKernel.h"
#include "rtf/RtfToHtml.h"

namespace tarn {
namespace {

using test::ConvertRtf;
using test::HtmlOf;
using test::kBodyStart;
using test::NaiveRtfToHtml;
using test::Repeat;

void ExpectAsDescribed(const std::string& rtf) {
  NaiveRtfToHtml naive(rtf);
  const Status status = naive.run();
  const test::Converted converted = ConvertRtf(rtf);
  ASSERT_EQ(converted.status, status) << rtf;
  if (status == StatusOk) {
    ASSERT_EQ(converted.bytes, naive.text) << rtf;
  }
}

constexpr auto kFragments = std::to_array<std::string_view>(
    {"{\\*\\htmltag",
     "{\\*\\htmltag1 <p>}",
     "{\\*\\mhtmltag1 <q>}",
     "{\\*\\mhtmltag",
     "\\intbl",
     "\\qc",
     "\\pard",
     "\\par",
     "\\tab",
     "\\cbpat2",
     "\\ltrch",
     "\\rtlch",
     "\\li",
     "\\sb",
     "\\qr",
     "\\f",
     "\\f0",
     "\\f1 ",
     "\\f2",
     "\\f3",
     "\\plain",
     "\\fi-",
     "\\'",
     "\\'e9",
     "\\'82\\'a0",
     "\\'c0",
     "\\'80\\'80\\'80",
     "\\'4",
     "\\pntext",
     "\\htmlrtf",
     "\\htmlrtf0",
     "\\htmlrtf0 ",
     "\\htmlrtf \\par \\htmlrtf0 ",
     "\\{",
     "\\}",
     "\\ansicpg",
     "\\ansicpg1252 ",
     "\\lang",
     "\\lang1049",
     "\\lang1041 ",
     "\\lang2057",
     "\\deff",
     "\\deff1",
     "{\\fonttbl",
     "{\\fonttbl{\\f0\\fcharset0 A;}{\\f1\\fcharset128 B;}{\\f2\\fcharset204 C;}}",
     "{\\fonttbl{\\f3\\fcharset2 S;}}",
     "\\u",
     "\\u8364?",
     "\\u-5?",
     "\\u4294967295 ?",
     "\\b-",
     "\\b",
     "\\",
     "{",
     "}",
     "{",
     "}",
     "\r",
     "\n",
     "\r\n",
     "\n\r",
     " ",
     "  ",
     "-",
     "0",
     "1",
     "5",
     "84",
     "4294967295",
     "text",
     "<p>",
     "&nbsp;",
     "\xFF",
     "\xE9",
     "*",
     "f",
     "\"",
     ";"});

// Long pieces, which bring the output to the edges of its room.
std::string LongPiece(std::mt19937& random) {
  const size_t count = 1 + random() % 700;
  switch (random() % 5) {
    case 0:
      return std::string(4 * count, '.');
    case 1:
      return Repeat("\\'80", count);
    case 2:
      return Repeat("\\'82\\'a0", count / 2) + "\\u12345678?";
    case 3:
      return Repeat("\\'41", count);
    default:
      return Repeat("\\par ", count);
  }
}

std::string RandomDocument(std::mt19937& random) {
  std::string rtf;
  if (random() % 2 == 0) rtf += "\\ansicpg1252 x";
  if (random() % 2 == 0) rtf += kBodyStart;
  const bool isLong = random() % 8 == 0;
  for (size_t pieces = random() % 60; pieces > 0; --pieces) {
    if (isLong && random() % 8 == 0) {
      rtf += LongPiece(random);
    } else {
      rtf += kFragments[random() % kFragments.size()];
    }
  }
  if (random() % 4 == 0) rtf += '\0';
  return rtf;
}

TEST(RtfToHtmlRandom, DocumentsComeOutAsDescribed) {
  std::mt19937 random(20240601);
  for (int i = 0; i < 8000; ++i) {
    ExpectAsDescribed(RandomDocument(random));
    if (HasFatalFailure()) return;
  }
}

// Runs and plain text around every edge of the room.
TEST(RtfToHtmlRandom, TheRoomIsAsDescribed) {
  std::mt19937 random(7);
  for (int i = 0; i < 1500; ++i) {
    std::string rtf = kBodyStart + "\\ansicpg1252 ";
    for (size_t pieces = 1 + random() % 5; pieces > 0; --pieces) {
      const size_t plain = random() % 8 == 0 ? random() % 4000 : random() % 3;
      rtf += Repeat("\\'80", 1 + random() % 520) + std::string(plain, '.');
      for (size_t more = random() % 3; more > 0; --more) rtf += "\\u2147483648?";
    }
    ExpectAsDescribed(rtf);
    if (HasFatalFailure()) return;
  }
}

TEST(RtfToHtmlRandom, BytesComeOutAsDescribed) {
  std::mt19937 random(11);
  for (int i = 0; i < 20000; ++i) {
    std::string rtf = kBodyStart;
    for (size_t bytes = random() % 40; bytes > 0; --bytes) {
      rtf += random() % 2 == 0 ? "\\{}'\r\nf-u0 "[random() % 11] : static_cast<char>(random());
    }
    ExpectAsDescribed(rtf);
    if (HasFatalFailure()) return;
  }
}

// Cut off anywhere, a document is read to its end and no further.
TEST(RtfToHtmlRandom, EveryTruncationComesOutAsDescribed) {
  std::string rtf = "{\\rtf1\\ansi\\ansicpg1252 \\deff0 x\\f1 x";
  for (const std::string_view fragment : kFragments) rtf += fragment;
  rtf += kBodyStart;
  for (const std::string_view fragment : kFragments) {
    rtf += fragment;
    rtf += "x\\htmlrtf0 ";
  }
  for (size_t length = 0; length <= rtf.size(); ++length) {
    ExpectAsDescribed(rtf.substr(0, length));
    if (HasFatalFailure()) return;
  }
}

// The most that a document can grow: 8 bytes for the 4 of an escape.
TEST(RtfToHtmlLimits, TheOutputIsAtMostTwiceAsLong) {
  const std::string rtf = kBodyStart + "\\ansicpg1252 " + Repeat("\\'80", 100000);
  EXPECT_EQ(HtmlOf(rtf).size(), 800000U);
}

// What the kernel held at most, beyond what it held before, while a document was converted.
uint64_t PeakOf(const std::string& rtf, uint64_t least) {
  // A block that large makes any higher peak show.
  PlainKernelUsageRecord before;
  PlainKernelUsage(&before);
  const auto floor = AllocateBlock<char>(before.peakBytes + least, TARN_HERE);
  SizedBytes text = test::BytesOf(rtf);
  PlainKernelUsage(&before);
  EXPECT_EQ(RtfToHtml(text), StatusOk);
  PlainKernelUsageRecord after;
  PlainKernelUsage(&after);
  return after.peakBytes - before.liveBytes;
}

// Beside the text: a block of twice the output, while it moves another half of it; for each byte of
// a run two wide units; for each change of the font 8 bytes, with their block as much again.
TEST(RtfToHtmlLimits, MemoryIsASmallMultipleOfTheText) {
  const std::string plain = kBodyStart + std::string(1 << 20, '.');
  EXPECT_LE(PeakOf(plain, 0), 2 * plain.size() + 8192);
  const std::string run = kBodyStart + "\\ansicpg1252 " + Repeat("\\'80", 1 << 18);
  EXPECT_LE(PeakOf(run, 0), 5 * run.size() + 8192);
  const std::string braces = kBodyStart + Repeat("{", 1 << 20);
  EXPECT_LE(PeakOf(braces, 0), 8192U);
  const std::string fonts = "{\\fonttbl{\\f0\\fcharset0;}{\\f1\\fcharset128;}} " + kBodyStart +
                            Repeat("{\\f0{\\f1", 1 << 17);
  EXPECT_LE(PeakOf(fonts, 0), 5 * fonts.size() + 8192);
}

TEST(RtfToHtmlLimits, LargeDocumentsTakeOnePass) {
  constexpr size_t kMany = 500000;
  EXPECT_EQ(HtmlOf(kBodyStart + Repeat("{", kMany) + Repeat("}", kMany)), "");
  EXPECT_EQ(HtmlOf(kBodyStart + Repeat("\\'", kMany)).size(), kMany / 2);
  EXPECT_EQ(HtmlOf(kBodyStart + Repeat("\\htmlrtf", kMany)), "f");
  EXPECT_EQ(HtmlOf(kBodyStart + Repeat("\\pntext ", kMany)), "");
  EXPECT_EQ(HtmlOf(kBodyStart + Repeat("{\\*\\mhtmltag1 {\\*\\htmltag1 ", kMany / 10)), "");
  EXPECT_EQ(HtmlOf(kBodyStart + Repeat("{\\fonttbl}", kMany / 5)), "");
  EXPECT_EQ(HtmlOf(kBodyStart + Repeat("\\", kMany)), std::string(kMany, '\\'));
  EXPECT_EQ(HtmlOf(Repeat("{\\*\\htmlta", kMany)), "");
  EXPECT_EQ(HtmlOf(kBodyStart + "\\f" + std::string(kMany, '1')), "");
}

// Fonts whose numbers differ in their highest bits only, and far more words that ask for the one
// that is found last.
TEST(RtfToHtmlLimits, ManyFontsAreNoBurden) {
  std::string fonts;
  std::string last;
  for (uint32_t i = 0; i < 8192; ++i) {
    last = "\\f" + std::to_string(i << 19);
    fonts += "{" + last + "\\fcharset204;}";
  }
  const std::string body = Repeat(last + " ", 500000) + "\\'c0";
  EXPECT_EQ(HtmlOf("{\\fonttbl" + fonts + "} " + kBodyStart + body), "&#x410;");
}

// A table for each font, and a look-up after each.
TEST(RtfToHtmlLimits, ManyTablesAreNoBurden) {
  std::string body;
  for (uint32_t i = 0; i < 8192; ++i) {
    body += "{\\fonttbl{\\f" + std::to_string(i) + ";}}\\f" + std::to_string(i) + " ";
  }
  EXPECT_EQ(HtmlOf(kBodyStart + body), "");
}

}  // namespace
}  // namespace tarn
