#include "eml/MimeBoundary.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "Tarnbase/PlainKernel.h"

namespace tarn {
namespace {

using namespace std::string_view_literals;

struct Boundary {
  Status status;
  std::string delimiter;
  size_t cursor = std::string_view::npos;

  explicit Boundary(std::string_view text) {
    TrackedBuffer<char> buffer;
    status = FindMimeBoundary(text, buffer, &cursor);
    if (!status.ok()) return;
    delimiter = buffer.view();
    EXPECT_EQ(buffer.data()[buffer.length()], '\0');
  }
};

TEST(MimeBoundary, QuotedValueInACrLfHeader) {
  const Boundary found("Content-Type: m/x; boundary=\"b c\"\r\nX: y\r\n\r\nbody");
  EXPECT_EQ(found.status, StatusOk);
  EXPECT_EQ(found.delimiter, "\r\n--b c");
  EXPECT_EQ(found.cursor, 35u);  // "X: y"
}

TEST(MimeBoundary, HeaderWithLfGivesADelimiterWithoutCr) {
  const Boundary found("Content-Type: m/x; boundary=\"b\"\nX: y\n\nbody");
  EXPECT_EQ(found.delimiter, "\n--b");
  EXPECT_EQ(found.cursor, 32u);  // "X: y"
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

TEST(MimeBoundary, KeyAfterTheHeaderIsNone) {
  EXPECT_EQ(Boundary("A: b\r\n\r\nboundary=x\r\n").status, StatusDone);
  EXPECT_EQ(Boundary("A: b\n\nboundary=x\n").status, StatusDone);
  // Without an empty line the header ends at the first CR LF.
  EXPECT_EQ(Boundary("A: b\r\nboundary=x\r\n").status, StatusDone);
  EXPECT_EQ(Boundary("").status, StatusDone);
}

TEST(MimeBoundary, CrAnywhereAfterTheValueGivesTheDelimiterItsCr) {
  EXPECT_EQ(Boundary("x: boundary=a\nY: z\rq\n\n").delimiter, "\r\n--a");
  EXPECT_EQ(Boundary("Y: z\rq\nx: boundary=a\n\n").delimiter, "\n--a");
}

TEST(MimeBoundary, FoldedLinesAfterTheValueArePassed) {
  const Boundary blank("x: boundary=a\r\n y=z\r\n\tq\r\nNext: 1\r\n\r\n");
  EXPECT_EQ(blank.cursor, 25u);  // "Next"
}

TEST(MimeBoundary, LfLinesAreTestedAtTheirSecondByte) {
  // The byte two places after a line end: the second one of the line after an LF.
  const Boundary second("x: boundary=a\nb c\nd:e\n\n");
  EXPECT_EQ(second.delimiter, "\n--a");
  EXPECT_EQ(second.cursor, 18u);  // "d:e": "b c" counted as folded
  const Boundary first("x: boundary=a\n b=c\nd:e\n\n");
  EXPECT_EQ(first.cursor, 14u);  // " b=c": its second byte is no blank
}

TEST(MimeBoundary, WithoutALineEndTheCursorIsAfterTheHeader) {
  EXPECT_EQ(Boundary("x: boundary=a").cursor, 14u);
  // A CR inside the value is not after it.
  const Boundary inside("x: boundary=\"a\rb\" q");
  EXPECT_EQ(inside.delimiter, "\n--a\rb");
  EXPECT_EQ(inside.cursor, 20u);
}

TEST(MimeBoundary, NullCursorIsRefused) {
  TrackedBuffer<char> buffer;
  const std::string_view text = "x: boundary=a";
  EXPECT_EQ(FindMimeBoundary(text, buffer, nullptr), StatusNullArgument);
}

TEST(MimeBoundary, WithoutMemoryItFails) {
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(Boundary("x: boundary=a\r\n\r\n").status, StatusOutOfMemory);
}

TEST(MimeBoundary, BufferIsUsedAgain) {
  TrackedBuffer<char> buffer;
  size_t cursor = 0;
  for (const std::string_view text : {"boundary=abcdef"sv, "boundary=g"sv}) {
    ASSERT_EQ(FindMimeBoundary(text, buffer, &cursor), StatusOk);
  }
  EXPECT_EQ(buffer.view(), "\n--g");
}

}  // namespace
}  // namespace tarn
