#include "eml/HeaderSearch.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace tarn {
namespace {

constexpr size_t kNull = std::string_view::npos;

size_t Offset(std::string_view text, const char* place) {
  return place == nullptr ? kNull : static_cast<size_t>(place - text.data());
}

size_t HeaderEnd(std::string_view text) {
  return Offset(text, FindHeaderEnd(text.data(), text.data() + text.size()));
}

size_t HeaderLine(std::string_view text, std::string_view name) {
  return Offset(text, FindHeaderLine(text.data(), text.data() + text.size(), name));
}

size_t ContentType(std::string_view text) {
  return Offset(text, FindContentType(text.data(), text.data() + text.size()));
}

size_t LineEnd(std::string_view text) {
  return Offset(text, FindLineEnd(text.data(), text.data() + text.size()));
}

size_t FoldedLineEnd(std::string_view text) {
  return Offset(text, FindFoldedLineEnd(text.data(), text.data() + text.size()));
}

TEST(FindHeaderEnd, IsBehindTheFirstEmptyLine) {
  EXPECT_EQ(HeaderEnd("A: b\r\n\r\ntext\r\n\r\nmore"), 8U);
  EXPECT_EQ(HeaderEnd("A: b\n\ntext\n\nmore"), 6U);
  EXPECT_EQ(HeaderEnd("\r\n\r\n"), 4U);
  EXPECT_EQ(HeaderEnd("\n\n"), 2U);
}

TEST(FindHeaderEnd, TakesCrLfPairsBeforeAnEarlierPairOfLf) {
  EXPECT_EQ(HeaderEnd("A: b\n\ntext\r\n\r\nmore"), 14U);
}

TEST(FindHeaderEnd, TakesAPairOfLfBeforeAnEarlierCrLf) {
  EXPECT_EQ(HeaderEnd("A: b\r\nC: d\n\ntext"), 12U);
}

TEST(FindHeaderEnd, IsBehindTheFirstLineWithoutAnEmptyLine) {
  EXPECT_EQ(HeaderEnd("A: b\r\nC: d\r\ntext"), 6U);
  EXPECT_EQ(HeaderEnd("\r\n"), 2U);
  EXPECT_EQ(HeaderEnd("\r\n\r"), 2U);
}

TEST(FindHeaderEnd, IsTheEndWithoutAnyOfThem) {
  EXPECT_EQ(HeaderEnd("A: b\nC: d\rtext"), 14U);
  EXPECT_EQ(HeaderEnd("\r"), 1U);
  EXPECT_EQ(HeaderEnd("\n"), 1U);
  EXPECT_EQ(HeaderEnd(""), 0U);
  EXPECT_EQ(FindHeaderEnd(nullptr, nullptr), nullptr);
}

TEST(FindHeaderEnd, LooksNoFurtherThanTheEnd) {
  const std::string_view text = "A: b\r\n\r\n";
  EXPECT_EQ(Offset(text, FindHeaderEnd(text.data(), text.data() + 7)), 6U);
  EXPECT_EQ(Offset(text, FindHeaderEnd(text.data(), text.data() + 5)), 5U);
}

TEST(FindHeaderLine, FindsTheNameAtTheStartAndBehindALineEnd) {
  EXPECT_EQ(HeaderLine("Subject: a", "Subject:"), 0U);
  EXPECT_EQ(HeaderLine("A: b\r\nSubject: a", "Subject:"), 6U);
  EXPECT_EQ(HeaderLine("A: b\nSubject: a", "Subject:"), 5U);
  EXPECT_EQ(HeaderLine("A: b\rSubject: a", "Subject:"), 5U);
}

TEST(FindHeaderLine, IgnoresCase) {
  EXPECT_EQ(HeaderLine("A: b\r\nsUBJECT: a", "Subject:"), 6U);
  EXPECT_EQ(HeaderLine("A: b\r\nSubject: a", "SUBJECT:"), 6U);
}

TEST(FindHeaderLine, PassesOverTheNameInsideALine) {
  EXPECT_EQ(HeaderLine("X-Subject: a\r\nSubject: b", "Subject:"), 14U);
  EXPECT_EQ(HeaderLine("A: \"Subject: \" Subject: c\r\n Subject: d", "Subject:"), kNull);
  EXPECT_EQ(HeaderLine("Content-Type: x; y=\"Content-Type: z\"", "Content-Type: z"), kNull);
}

// The search goes on one byte behind a match that does not count, so that one that overlaps it is
// found.
TEST(FindHeaderLine, FindsANameThatOverlapsOneInsideALine) {
  EXPECT_EQ(HeaderLine("xa\na\na", "a\na"), 3U);
}

TEST(FindHeaderLine, WantsTheWholeNameInFrontOfTheEnd) {
  const std::string_view text = "A: b\r\nSubject:";
  EXPECT_EQ(Offset(text, FindHeaderLine(text.data(), text.data() + 14, "Subject:")), 6U);
  EXPECT_EQ(Offset(text, FindHeaderLine(text.data(), text.data() + 13, "Subject:")), kNull);
  EXPECT_EQ(HeaderLine("", "Subject:"), kNull);
}

// A match in the line counts where the stretch starts with it, whatever stands in front of the
// stretch.
TEST(FindHeaderLine, TakesTheStartOfTheStretchForALineStart) {
  const std::string_view text = "X-Subject: a";
  EXPECT_EQ(Offset(text, FindHeaderLine(text.data() + 2, text.data() + text.size(), "Subject:")),
            2U);
}

TEST(FindHeaderLine, ComesToAnEndOnMegabytesOfNamesInsideLines) {
  std::string text = " ";
  while (text.size() < (8U << 20)) text += "Content-Type:";
  EXPECT_EQ(HeaderLine(text, "Content-Type:"), kNull);
  text += "\nContent-Type:";
  EXPECT_EQ(HeaderLine(text, "Content-Type:"), text.size() - 13);
}

TEST(FindContentType, IsTheValueBehindBlanks) {
  EXPECT_EQ(ContentType("Content-Type: text/html"), 14U);
  EXPECT_EQ(ContentType("Content-Type:text/html"), 13U);
  EXPECT_EQ(ContentType("Content-Type:    text/html"), 17U);
  EXPECT_EQ(ContentType("A: b\r\ncontent-type: text/html"), 20U);
}

TEST(FindContentType, DoesNotPassOverTabsOrLineEnds) {
  EXPECT_EQ(ContentType("Content-Type:\ttext/html"), 13U);
  EXPECT_EQ(ContentType("Content-Type: \ttext/html"), 14U);
  EXPECT_EQ(ContentType("Content-Type: \r\n text/html"), 14U);
}

TEST(FindContentType, IsTheEndWhenNoOtherByteIsLeft) {
  EXPECT_EQ(ContentType("Content-Type:"), 13U);
  EXPECT_EQ(ContentType("Content-Type:   "), 16U);
}

TEST(FindContentType, IsNullWithoutTheLine) {
  EXPECT_EQ(ContentType(""), kNull);
  EXPECT_EQ(ContentType("Content-Type"), kNull);
  EXPECT_EQ(ContentType("X-Content-Type: text/html"), kNull);
  EXPECT_EQ(ContentType("A: \"Content-Type: text/html\""), kNull);
}

TEST(FindContentType, TakesTheFirstLine) {
  EXPECT_EQ(ContentType("Content-Type: a\r\nContent-Type: b"), 14U);
}

TEST(FindLineEnd, IsTheFirstOfCrAndLf) {
  EXPECT_EQ(LineEnd("ab\r\ncd"), 2U);
  EXPECT_EQ(LineEnd("ab\ncd\r\n"), 2U);
  EXPECT_EQ(LineEnd("ab\rcd\n"), 2U);
  EXPECT_EQ(LineEnd("\r\n"), 0U);
  EXPECT_EQ(LineEnd("abc"), 3U);
  EXPECT_EQ(LineEnd(""), 0U);
}

TEST(FindLineEnd, FindsItAtAnyDistance) {
  for (size_t length = 0; length < 800; ++length) {
    const std::string line(length, 'x');
    EXPECT_EQ(LineEnd(line), length);
    EXPECT_EQ(LineEnd(line + "\rx\n"), length);
    EXPECT_EQ(LineEnd(line + "\nx\r"), length);
  }
}

TEST(FindFoldedLineEnd, PassesOverLinesThatContinue) {
  EXPECT_EQ(FoldedLineEnd("a\r\nb"), 1U);
  EXPECT_EQ(FoldedLineEnd("a\r\n b\r\nc"), 5U);
  EXPECT_EQ(FoldedLineEnd("a\r\n\tb\r\n c\r\nd"), 9U);
}

TEST(FindFoldedLineEnd, TakesALineEndAtTheEnd) {
  EXPECT_EQ(FoldedLineEnd("a\r\n"), 1U);
  EXPECT_EQ(FoldedLineEnd("a\n"), 1U);
  EXPECT_EQ(FoldedLineEnd("a\nb"), 1U);
  EXPECT_EQ(FoldedLineEnd("a\r"), 1U);
}

TEST(FindFoldedLineEnd, IsNullWithoutALineEnd) {
  EXPECT_EQ(FoldedLineEnd(""), kNull);
  EXPECT_EQ(FoldedLineEnd("abc"), kNull);
  EXPECT_EQ(FoldedLineEnd("a\r\n bc"), kNull);
}

// The byte two places behind a lone LF is the second byte of the next line.
TEST(FindFoldedLineEnd, TestsTwoPlacesBehindALoneLf) {
  EXPECT_EQ(FoldedLineEnd("a\n b\nc"), 1U);
  EXPECT_EQ(FoldedLineEnd("a\nb c\nd"), 5U);
  EXPECT_EQ(FoldedLineEnd("a\n  b\nc"), 5U);
}

// The search goes on from the byte that was tested: a line end in front of it is passed over.
TEST(FindFoldedLineEnd, GoesOnFromTheTestedByte) {
  EXPECT_EQ(FoldedLineEnd("a\n\n b\nc"), 5U);
  EXPECT_EQ(FoldedLineEnd("a\n\r b\r\nc"), 5U);
}

TEST(FindFoldedLineEnd, ComesToAnEndOnMegabytesOfFoldedLines) {
  std::string text = "a";
  while (text.size() < (8U << 20)) text += "\r\r ";
  EXPECT_EQ(FoldedLineEnd(text), kNull);
}

}  // namespace
}  // namespace tarn
