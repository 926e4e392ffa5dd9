#include "eml/MimeBoundary.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "Tarnbase/PlainKernel.h"

namespace tarn {
namespace {

using namespace std::string_view_literals;

struct Boundary {
  int32_t status = 0;
  std::string delimiter;
  ptrdiff_t cursor = -1;  // offset in the text

  explicit Boundary(std::string_view text) {
    TrackedBuffer<char> buffer;
    const char* at = nullptr;
    status = FindMimeBoundary(text.data(), text.data() + text.size(), buffer, &at);
    if (status != 1) return;
    delimiter.assign(buffer.data(), buffer.length());
    EXPECT_EQ(buffer.data()[buffer.length()], '\0');
    cursor = at - text.data();
  }
};

TEST(MimeBoundary, QuotedValueInACrLfHeader) {
  const Boundary found("Content-Type: m/x; boundary=\"b c\"\r\nX: y\r\n\r\nbody");
  EXPECT_EQ(found.status, 1);
  EXPECT_EQ(found.delimiter, "\r\n--b c");
  EXPECT_EQ(found.cursor, 35);  // "X: y"
}

TEST(MimeBoundary, HeaderWithLfGivesADelimiterWithoutCr) {
  const Boundary found("Content-Type: m/x; boundary=\"b\"\nX: y\n\nbody");
  EXPECT_EQ(found.delimiter, "\n--b");
  EXPECT_EQ(found.cursor, 32);  // "X: y"
}

TEST(MimeBoundary, UnquotedValueRunsToTheLineEnd) {
  EXPECT_EQ(Boundary("x: boundary=abc; type=y\r\n\r\n").delimiter, "\r\n--abc; type=y");
  EXPECT_EQ(Boundary("x: boundary=abc\n\n").delimiter, "\n--abc");
  EXPECT_EQ(Boundary("x: boundary=abc").delimiter, "\n--abc");
  EXPECT_EQ(Boundary("x: boundary=\r\n\r\n").delimiter, "\r\n--");
}

TEST(MimeBoundary, QuotedValueMayHoldAnything) {
  EXPECT_EQ(Boundary("x: boundary=\"a\r\n\0b\"\n\n"sv).delimiter, "\n--a\r\n\0b"sv);
  EXPECT_EQ(Boundary("x: boundary=\"\"\r\n\r\n").delimiter, "\r\n--");
}

TEST(MimeBoundary, QuoteWithoutAPartnerRunsToTheLineEnd) {
  EXPECT_EQ(Boundary("x: boundary=\"abc\r\nY: z\r\n\r\n\"").delimiter, "\r\n--abc");
  EXPECT_EQ(Boundary("x: boundary=\"").delimiter, "\n--");
}

TEST(MimeBoundary, KeyCountsInAnyCaseAndPosition) {
  EXPECT_EQ(Boundary("Subject: myBoUnDaRy=q\r\n\r\n").delimiter, "\r\n--q");
}

TEST(MimeBoundary, FirstKeyCounts) {
  EXPECT_EQ(Boundary("x: boundary=a\nx: boundary=b\n\n").delimiter, "\n--a");
}

TEST(MimeBoundary, KeyBehindTheHeaderIsNone) {
  EXPECT_EQ(Boundary("A: b\r\n\r\nboundary=x\r\n").status, 2);
  EXPECT_EQ(Boundary("A: b\n\nboundary=x\n").status, 2);
  // Without an empty line the header ends at the first CR LF.
  EXPECT_EQ(Boundary("A: b\r\nboundary=x\r\n").status, 2);
  EXPECT_EQ(Boundary("").status, 2);
}

TEST(MimeBoundary, CrAnywhereBehindTheValueGivesTheDelimiterItsCr) {
  EXPECT_EQ(Boundary("x: boundary=a\nY: z\rq\n\n").delimiter, "\r\n--a");
  EXPECT_EQ(Boundary("Y: z\rq\nx: boundary=a\n\n").delimiter, "\n--a");
}

TEST(MimeBoundary, FoldedLinesBehindTheValueArePassed) {
  const Boundary blank("x: boundary=a\r\n y=z\r\n\tq\r\nNext: 1\r\n\r\n");
  EXPECT_EQ(blank.cursor, 25);  // "Next"
}

TEST(MimeBoundary, LfLinesAreTestedAtTheirSecondByte) {
  // The byte two places behind a line end: the second one of the line behind an LF.
  const Boundary second("x: boundary=a\nb c\nd:e\n\n");
  EXPECT_EQ(second.delimiter, "\n--a");
  EXPECT_EQ(second.cursor, 18);  // "d:e": "b c" counted as folded
  const Boundary first("x: boundary=a\n b=c\nd:e\n\n");
  EXPECT_EQ(first.cursor, 14);  // " b=c": its second byte is no blank
}

TEST(MimeBoundary, WithoutALineEndTheCursorIsBehindTheHeader) {
  EXPECT_EQ(Boundary("x: boundary=a").cursor, 14);
  // A CR inside the value is not behind it.
  const Boundary inside("x: boundary=\"a\rb\" q");
  EXPECT_EQ(inside.delimiter, "\n--a\rb");
  EXPECT_EQ(inside.cursor, 20);
}

TEST(MimeBoundary, NullCursorIsRefused) {
  TrackedBuffer<char> buffer;
  const std::string_view text = "x: boundary=a";
  EXPECT_EQ(FindMimeBoundary(text.data(), text.data() + text.size(), buffer, nullptr), -814);
}

TEST(MimeBoundary, WithoutMemoryItFails) {
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(Boundary("x: boundary=a\r\n\r\n").status, -1);
}

TEST(MimeBoundary, BufferIsUsedAgain) {
  TrackedBuffer<char> buffer;
  const char* cursor = nullptr;
  for (const std::string_view text : {"boundary=abcdef"sv, "boundary=g"sv}) {
    ASSERT_EQ(FindMimeBoundary(text.data(), text.data() + text.size(), buffer, &cursor), 1);
  }
  EXPECT_EQ(std::string(buffer.data(), buffer.length()), "\n--g");
}

}  // namespace
}  // namespace tarn
