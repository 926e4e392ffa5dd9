#include "archive/text/TerminalText.h"

#include <gtest/gtest.h>

#include <string>

namespace tarn::archive {
namespace {

using namespace std::string_literals;

TEST(HarmlessTextTest, KeepsWhatIsText) {
  EXPECT_EQ(HarmlessText("Plain\ttext\nof \xC3\xA9t\xC3\xA9, \xE6\x97\xA5\xE6\x9C\xAC, "
                         "\xF0\x9F\x98\x80."),
            "Plain\ttext\nof \xC3\xA9t\xC3\xA9, \xE6\x97\xA5\xE6\x9C\xAC, \xF0\x9F\x98\x80.");
  EXPECT_EQ(HarmlessText(""), "");
}

TEST(HarmlessTextTest, EndsEveryLineAlike) {
  EXPECT_EQ(HarmlessText("a\r\nb\rc\n\rd\fe\vf"), "a\nb\nc\n\nd\ne\nf");
  EXPECT_EQ(HarmlessText("a\xC2\x85"
                         "b\xE2\x80\xA8"
                         "c\xE2\x80\xA9"
                         "d"),
            "a\nb\nc\nd");
}

TEST(HarmlessTextTest, ShowsControlsAsReplaced) {
  EXPECT_EQ(HarmlessText("\x1B[31mred\a\b\x7F"),
            "\xEF\xBF\xBD[31mred\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(HarmlessText("a\0b"s),
            "a\xEF\xBF\xBD"
            "b");
  // U+009B opens a sequence of control as ESC [ does.
  EXPECT_EQ(HarmlessText("\xC2\x9B"
                         "2J"),
            "\xEF\xBF\xBD"
            "2J");
}

TEST(HarmlessTextTest, ShowsWhatIsNoUtf8AsReplaced) {
  EXPECT_EQ(HarmlessText("a\xFF\xE2\x82z\x9B"), "a\xEF\xBF\xBD\xEF\xBF\xBDz\xEF\xBF\xBD");
}

TEST(HarmlessTextTest, LeavesOutWhatTurnsTheDirection) {
  EXPECT_EQ(HarmlessText("invoice\xE2\x80\xAE"
                         "fdp.exe\xE2\x80\xAC \xE2\x81\xA6x\xE2\x81\xA9\xEF\xBB\xBF"),
            "invoicefdp.exe x");
  EXPECT_EQ(HarmlessText("a\u200E\u200F\u061C\u200Db"), "a\u200Db");
}

TEST(HarmlessLineTest, HasNoLineEnds) {
  EXPECT_EQ(HarmlessLine("one\r\ntwo\n\tthree\x1B"), "one two  three\xEF\xBF\xBD");
}

TEST(ColumnsTest, CountsAsATerminalDoes) {
  EXPECT_EQ(Columns(""), 0u);
  EXPECT_EQ(Columns("abc"), 3u);
  EXPECT_EQ(Columns("\xE6\x97\xA5\xE6\x9C\xAC"), 4u);
  EXPECT_EQ(Columns("e\xCC\x81"), 1u);
  EXPECT_EQ(Columns("a\xFF"), 2u);
}

TEST(CutToColumnsTest, KeepsWhatFits) {
  EXPECT_EQ(CutToColumns("abc", 3), "abc");
  EXPECT_EQ(CutToColumns("\xE6\x97\xA5\xE6\x9C\xAC", 4), "\xE6\x97\xA5\xE6\x9C\xAC");
  EXPECT_EQ(CutToColumns("", 0), "");
}

TEST(CutToColumnsTest, EndsWithAnEllipsisWhereItCuts) {
  EXPECT_EQ(CutToColumns("abcd", 3), "ab\xE2\x80\xA6");
  EXPECT_EQ(CutToColumns("abcd", 1), "\xE2\x80\xA6");
  EXPECT_EQ(CutToColumns("abcd", 0), "");
  // Half of a wide character is not shown.
  EXPECT_EQ(CutToColumns("\xE6\x97\xA5\xE6\x9C\xAC", 3), "\xE6\x97\xA5\xE2\x80\xA6");
  EXPECT_EQ(CutToColumns("\xE6\x97\xA5\xE6\x9C\xAC", 2), "\xE2\x80\xA6");
}

TEST(CutToColumnsTest, KeepsTheMarksOfABase) {
  EXPECT_EQ(CutToColumns("ae\xCC\x81zz", 3), "ae\xCC\x81\xE2\x80\xA6");
  EXPECT_EQ(CutToColumns("abe\xCC\x81", 3), "abe\xCC\x81");
}

}  // namespace
}  // namespace tarn::archive
