#include "eml/HeaderSearch.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace tarn {
namespace {

constexpr size_t kNone = std::string_view::npos;

size_t FoldedLineEnd(std::string_view text) { return FindFoldedLineEnd({text, text.size()}); }

TEST(FindHeaderEnd, IsAfterTheFirstEmptyLine) {
  EXPECT_EQ(FindHeaderEnd("A: b\r\n\r\ntext\r\n\r\nmore"), 8U);
  EXPECT_EQ(FindHeaderEnd("A: b\n\ntext\n\nmore"), 6U);
  EXPECT_EQ(FindHeaderEnd("\r\n\r\n"), 4U);
  EXPECT_EQ(FindHeaderEnd("\n\n"), 2U);
}

TEST(FindHeaderEnd, TakesCrLfPairsBeforeAnEarlierPairOfLf) {
  EXPECT_EQ(FindHeaderEnd("A: b\n\ntext\r\n\r\nmore"), 14U);
}

TEST(FindHeaderEnd, TakesAPairOfLfBeforeAnEarlierCrLf) {
  EXPECT_EQ(FindHeaderEnd("A: b\r\nC: d\n\ntext"), 12U);
}

TEST(FindHeaderEnd, IsAfterTheFirstLineWithoutAnEmptyLine) {
  EXPECT_EQ(FindHeaderEnd("A: b\r\nC: d\r\ntext"), 6U);
  EXPECT_EQ(FindHeaderEnd("\r\n"), 2U);
  EXPECT_EQ(FindHeaderEnd("\r\n\r"), 2U);
}

TEST(FindHeaderEnd, IsTheEndWithoutAnyOfThem) {
  EXPECT_EQ(FindHeaderEnd("A: b\nC: d\rtext"), 14U);
  EXPECT_EQ(FindHeaderEnd("\r"), 1U);
  EXPECT_EQ(FindHeaderEnd("\n"), 1U);
  EXPECT_EQ(FindHeaderEnd(""), 0U);
  EXPECT_EQ(FindHeaderEnd({}), 0U);
}

TEST(FindHeaderEnd, LooksNoFurtherThanTheEnd) {
  const std::string_view text = "A: b\r\n\r\n";
  EXPECT_EQ(FindHeaderEnd(text.substr(0, 7)), 6U);
  EXPECT_EQ(FindHeaderEnd(text.substr(0, 5)), 5U);
}

TEST(FindHeaderLine, FindsTheNameAtTheStartAndAfterALineEnd) {
  EXPECT_EQ(FindHeaderLine("Subject: a", "Subject:"), 0U);
  EXPECT_EQ(FindHeaderLine("A: b\r\nSubject: a", "Subject:"), 6U);
  EXPECT_EQ(FindHeaderLine("A: b\nSubject: a", "Subject:"), 5U);
  EXPECT_EQ(FindHeaderLine("A: b\rSubject: a", "Subject:"), 5U);
}

TEST(FindHeaderLine, IgnoresCase) {
  EXPECT_EQ(FindHeaderLine("A: b\r\nsUBJECT: a", "Subject:"), 6U);
  EXPECT_EQ(FindHeaderLine("A: b\r\nSubject: a", "SUBJECT:"), 6U);
}

TEST(FindHeaderLine, PassesOverTheNameInsideALine) {
  EXPECT_EQ(FindHeaderLine("X-Subject: a\r\nSubject: b", "Subject:"), 14U);
  EXPECT_EQ(FindHeaderLine("A: \"Subject: \" Subject: c\r\n Subject: d", "Subject:"), kNone);
  EXPECT_EQ(FindHeaderLine("Content-Type: x; y=\"Content-Type: z\"", "Content-Type: z"), kNone);
}

// The search goes on one byte after a match that does not count, so that one that overlaps it is
// found.
TEST(FindHeaderLine, FindsANameThatOverlapsOneInsideALine) {
  EXPECT_EQ(FindHeaderLine("xa\na\na", "a\na"), 3U);
}

TEST(FindHeaderLine, WantsTheWholeNameBeforeTheEnd) {
  const std::string_view text = "A: b\r\nSubject:";
  EXPECT_EQ(FindHeaderLine(text.substr(0, 14), "Subject:"), 6U);
  EXPECT_EQ(FindHeaderLine(text.substr(0, 13), "Subject:"), kNone);
  EXPECT_EQ(FindHeaderLine("", "Subject:"), kNone);
}

// A match in the line counts where the stretch starts with it, whatever comes before the
// stretch.
TEST(FindHeaderLine, TakesTheStartOfTheStretchForALineStart) {
  const std::string_view text = "X-Subject: a";
  EXPECT_EQ(FindHeaderLine(text.substr(2), "Subject:"), 0U);
}

TEST(FindHeaderLine, ComesToAnEndOnMegabytesOfNamesInsideLines) {
  std::string text = " ";
  while (text.size() < (8U << 20)) text += "Content-Type:";
  EXPECT_EQ(FindHeaderLine(text, "Content-Type:"), kNone);
  text += "\nContent-Type:";
  EXPECT_EQ(FindHeaderLine(text, "Content-Type:"), text.size() - 13);
}

TEST(FindContentType, IsTheValueAfterBlanks) {
  EXPECT_EQ(FindContentType("Content-Type: text/html"), 14U);
  EXPECT_EQ(FindContentType("Content-Type:text/html"), 13U);
  EXPECT_EQ(FindContentType("Content-Type:    text/html"), 17U);
  EXPECT_EQ(FindContentType("A: b\r\ncontent-type: text/html"), 20U);
}

TEST(FindContentType, DoesNotPassOverTabsOrLineEnds) {
  EXPECT_EQ(FindContentType("Content-Type:\ttext/html"), 13U);
  EXPECT_EQ(FindContentType("Content-Type: \ttext/html"), 14U);
  EXPECT_EQ(FindContentType("Content-Type: \r\n text/html"), 14U);
}

TEST(FindContentType, IsTheEndWhenNoOtherByteIsLeft) {
  EXPECT_EQ(FindContentType("Content-Type:"), 13U);
  EXPECT_EQ(FindContentType("Content-Type:   "), 16U);
}

TEST(FindContentType, IsNoneWithoutTheLine) {
  EXPECT_EQ(FindContentType(""), kNone);
  EXPECT_EQ(FindContentType("Content-Type"), kNone);
  EXPECT_EQ(FindContentType("X-Content-Type: text/html"), kNone);
  EXPECT_EQ(FindContentType("A: \"Content-Type: text/html\""), kNone);
}

TEST(FindContentType, TakesTheFirstLine) {
  EXPECT_EQ(FindContentType("Content-Type: a\r\nContent-Type: b"), 14U);
}

TEST(FindLineEnd, IsTheFirstOfCrAndLf) {
  EXPECT_EQ(FindLineEnd("ab\r\ncd"), 2U);
  EXPECT_EQ(FindLineEnd("ab\ncd\r\n"), 2U);
  EXPECT_EQ(FindLineEnd("ab\rcd\n"), 2U);
  EXPECT_EQ(FindLineEnd("\r\n"), 0U);
  EXPECT_EQ(FindLineEnd("abc"), 3U);
  EXPECT_EQ(FindLineEnd(""), 0U);
}

TEST(FindLineEnd, FindsItAtAnyDistance) {
  for (size_t length = 0; length < 800; ++length) {
    const std::string line(length, 'x');
    EXPECT_EQ(FindLineEnd(line), length);
    EXPECT_EQ(FindLineEnd(line + "\rx\n"), length);
    EXPECT_EQ(FindLineEnd(line + "\nx\r"), length);
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

TEST(FindFoldedLineEnd, IsTheEndWithoutALineEnd) {
  EXPECT_EQ(FoldedLineEnd(""), 0U);
  EXPECT_EQ(FoldedLineEnd("abc"), 3U);
  EXPECT_EQ(FoldedLineEnd("a\r\n bc"), 6U);
}

// The byte two places after a lone LF is the second byte of the next line.
TEST(FindFoldedLineEnd, TestsTwoPlacesAfterALoneLf) {
  EXPECT_EQ(FoldedLineEnd("a\n b\nc"), 1U);
  EXPECT_EQ(FoldedLineEnd("a\nb c\nd"), 5U);
  EXPECT_EQ(FoldedLineEnd("a\n  b\nc"), 5U);
}

// The search goes on from the byte that was tested: a line end before it is passed over.
TEST(FindFoldedLineEnd, GoesOnFromTheTestedByte) {
  EXPECT_EQ(FoldedLineEnd("a\n\n b\nc"), 5U);
  EXPECT_EQ(FoldedLineEnd("a\n\r b\r\nc"), 5U);
}

TEST(FindFoldedLineEnd, ComesToAnEndOnMegabytesOfFoldedLines) {
  std::string text = "a";
  while (text.size() < (8U << 20)) text += "\r\r ";
  EXPECT_EQ(FoldedLineEnd(text), text.size());
}

TEST(FindFoldedLineEnd, BytesAfterTheHeaderTellAFoldedLineToo) {
  const std::string_view text = "a\n\n b";
  // The byte two places after the first LF is the blank that the content begins with.
  EXPECT_EQ(FindFoldedLineEnd({text, 3}), 3U);
  EXPECT_EQ(FindFoldedLineEnd({text.substr(0, 3), 3}), 1U);
  const std::string_view tab = "a\nb\t";
  EXPECT_EQ(FindFoldedLineEnd({tab, 2}), 2U);
  EXPECT_EQ(FindFoldedLineEnd({tab.substr(0, 3), 2}), 1U);
}

TEST(FindFoldedLineEnd, EndsWithTheStretchWhateverComesAfterIt) {
  const std::string_view text = "a\r\n b\r\nc";
  EXPECT_EQ(FindFoldedLineEnd({text, 8}), 5U);
  EXPECT_EQ(FindFoldedLineEnd({text, 1}), 1U);
  EXPECT_EQ(FindFoldedLineEnd({text, 5}), 5U);
}

TEST(FindFixedValue, LiesOneByteAfterTheName) {
  EXPECT_EQ(FindFixedValue("A: b", "A:"), 3U);
  EXPECT_EQ(FindFixedValue("A:b", "A:"), 3U);
  EXPECT_EQ(FindFixedValue("A:", "A:"), 2U);
  EXPECT_EQ(FindFixedValue("x\na:\nq", "A:"), 5U);
  EXPECT_EQ(FindFixedValue("xA: b", "A:"), kNone);
}

TEST(HeaderStretch, IsCutFromTheFront) {
  const HeaderStretch stretch = {"abcdef", 4};
  EXPECT_EQ(stretch.text(), "abcd");
  EXPECT_EQ(stretch.from(1).text(), "bcd");
  EXPECT_EQ(stretch.from(4).text(), "");
  EXPECT_EQ(stretch.from(4).readable, "ef");
}

}  // namespace
}  // namespace tarn
