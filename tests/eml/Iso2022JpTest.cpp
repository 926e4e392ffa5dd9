#include "eml/Iso2022Jp.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "Tarnbase/PlainKernel.h"
#include "support/FaultSweep.h"
#include "support/Texts.h"

namespace tarn {
namespace {

using namespace std::string_view_literals;
using test::Sized;

// "F|K\" of JIS X 0208 in UTF-8: U+65E5, U+672C.
constexpr char kJapan[] = "\xE6\x97\xA5\xE6\x9C\xAC";
constexpr char kUnknown[] = "\xEF\xBF\xBD";

std::string Convert(std::string_view source, uint64_t offset = 0) {
  SizedBytes text = Sized(source);
  EXPECT_EQ(ConvertIso2022Jp(text, offset), StatusOk);
  return std::string(text.view());
}

TEST(ConvertIso2022Jp, ConvertsRuns) {
  EXPECT_EQ(Convert("a\33$BF|K\\\33(Bz"), std::string("a") + kJapan + "z");
  EXPECT_EQ(Convert("\33$@F|K\\\33(B"), kJapan);
  EXPECT_EQ(Convert("\33$B$\"\33$@%\"\33(B"), "\xE3\x81\x82\xE3\x82\xA2");
}

TEST(ConvertIso2022Jp, TerminatesTheTextWithoutCountingTheNul) {
  for (const std::string_view source : {"\33(Bab"sv, "\33(Bab\0"sv}) {
    SizedBytes text = Sized(source);
    ASSERT_EQ(ConvertIso2022Jp(text, 0), StatusOk);
    EXPECT_EQ(text.view(), "ab");
    EXPECT_EQ(text.data()[2], '\0');
  }
}

TEST(ConvertIso2022Jp, KeepsTextWithoutAnEscape) {
  EXPECT_EQ(Convert("a\\~\x80\xFF"), "a\\~\x80\xFF");
  EXPECT_EQ(Convert("ab\0"sv), "ab\0"sv);
  EXPECT_EQ(Convert("ab\0\0"sv), "ab\0\0"sv);
  EXPECT_EQ(Convert(""), "");
  EXPECT_EQ(Convert("\0"sv), "\0"sv);
}

TEST(ConvertIso2022Jp, RenamesTheDeclaredCharset) {
  EXPECT_EQ(Convert("charset=ISO-2022-jp\">\33$BF|\33(B iso-2022-jp"),
            "charset=UTF-8\">\xE6\x97\xA5 iso-2022-jp");
}

TEST(ConvertIso2022Jp, RenamesTheCharsetOfATextWithoutAnEscape) {
  SizedBytes text = Sized("x iso-2022-jp y\0"sv);
  ASSERT_EQ(ConvertIso2022Jp(text, 0), StatusOk);
  EXPECT_EQ(text.view(), "x UTF-8 y");
  EXPECT_EQ(text.data()[9], '\0');

  text = Sized("iso-2022-jp");
  ASSERT_EQ(ConvertIso2022Jp(text, 0), StatusOk);
  EXPECT_EQ(text.view(), "UTF-8");
  EXPECT_EQ(text.data()[5], '\0');
}

TEST(ConvertIso2022Jp, StartsAtTheOffset) {
  EXPECT_EQ(Convert("iso-2022-jp\33(J\\\33(Biso-2022-jp\33(J\\", 16),
            "iso-2022-jp\33(J\\\33(BUTF-8\xA5");
  EXPECT_EQ(Convert("iso-2022-jp\33(J\\\33(Biso-2022-jp\33(J\\", 15),
            "iso-2022-jp\33(J\\UTF-8\xA5");
  EXPECT_EQ(Convert("\33(Jab", 1), "\33(Jab");
  EXPECT_EQ(Convert("ab\33(Jc", 2), "abc");
}

TEST(ConvertIso2022Jp, DoesNothingFromTheEndOn) {
  EXPECT_EQ(Convert("\33(Ja", 4), "\33(Ja");
  EXPECT_EQ(Convert("\33(Ja\0"sv, 4), "\33(Ja\0"sv);
  EXPECT_EQ(Convert("\33(Ja\0"sv, 5), "\33(Ja\0"sv);
  EXPECT_EQ(Convert("\33(Ja", 100), "\33(Ja");
  EXPECT_EQ(Convert("\33(Ja\0"sv, 3), "\33(Ja\0"sv);
}

TEST(ConvertIso2022Jp, RefusesANullText) {
  SizedBytes text;
  EXPECT_EQ(ConvertIso2022Jp(text, 0), StatusNullArgument);
}

// "\" means the yen sign and becomes one byte; "~" for the overline.
TEST(ConvertIso2022Jp, ConvertsJisRoman) {
  EXPECT_EQ(Convert("\33(Ja\\b~c"),
            "a\xA5"
            "b\xE2\x80\xBE"
            "c");
  EXPECT_EQ(Convert("\33(J\\\\~~"), "\xA5\xA5\xE2\x80\xBE\xE2\x80\xBE");
  EXPECT_EQ(Convert("\\~\33(J\\~\33(B\\~"), "\\~\xA5\xE2\x80\xBE\\~");
  EXPECT_EQ(Convert("\33(J\r\n\\\r\n\33(B\\"), "\r\n\xA5\r\n\\");
}

TEST(ConvertIso2022Jp, EndsJisX0208AtTheEndOfTheLine) {
  EXPECT_EQ(Convert("\33$BF|\r\nF|\\~\r\n\33$BF|"), "\xE6\x97\xA5\r\nF|\\~\r\n\xE6\x97\xA5");
  EXPECT_EQ(Convert("\33$BF|\nF|"), "\xE6\x97\xA5\nF|");
  EXPECT_EQ(Convert("\33$BF|\rF|"), "\xE6\x97\xA5\rF|");
  EXPECT_EQ(Convert("\33$BF|\nF|\r\33(B"), "\xE6\x97\xA5\nF|\r");
  EXPECT_EQ(Convert("\33$B\r\nF|"), "\r\nF|");
}

// After a line's end the set is the one before JIS X 0208: JIS-Roman, if that was the last of the
// two.
TEST(ConvertIso2022Jp, FallsBackToTheLastSingleByteSet) {
  EXPECT_EQ(Convert("\33(J\\\33$BF|\n\\~"), "\xA5\xE6\x97\xA5\n\xA5\xE2\x80\xBE");
  EXPECT_EQ(Convert("\33(J\\\33(B\\\33$BF|\n\\"), "\xA5\\\xE6\x97\xA5\n\\");
  EXPECT_EQ(Convert("\33(J\33$BF|\n\\"), "\xE6\x97\xA5\n\xA5");
  // JIS-Roman, two stretches of JIS X 0208, each ended by a line.
  EXPECT_EQ(Convert("\33(J\33$BF|\n\33$BK\\\n\\"), "\xE6\x97\xA5\n\xE6\x9C\xAC\n\xA5");
  // From one stretch of JIS X 0208 right into another the fallback stays.
  EXPECT_EQ(Convert("\33(J\33$BF|\33$@F|\n\\"), "\xE6\x97\xA5\xE6\x97\xA5\n\xA5");
}

TEST(ConvertIso2022Jp, KeepsUnknownEscapesAsText) {
  EXPECT_EQ(Convert("\33(Ia\33(J\\"), "\33(Ia\xA5");
  EXPECT_EQ(Convert("\33(b\33$A\33)B\33x"), "\33(b\33$A\33)B\33x");
  EXPECT_EQ(Convert("\33\33(J\\"), "\33\xA5");
  EXPECT_EQ(Convert("\33(\33(J\\"), "\33(\xA5");
  EXPECT_EQ(Convert("\33(J\33(I\\"), "\33(I\xA5");
  // In JIS X 0208 the escape is a control, and what follows is read as pairs.
  EXPECT_EQ(Convert("\33$BF|\33(IF|"),
            std::string("\xE6\x97\xA5") + kUnknown + kUnknown + "\xE6\x97\xA5");
}

TEST(ConvertIso2022Jp, KeepsAnEscapeThatTheEndCutsOff) {
  EXPECT_EQ(Convert("a\33"), "a\33");
  EXPECT_EQ(Convert("a\33("), "a\33(");
  EXPECT_EQ(Convert("a\33$"), "a\33$");
  EXPECT_EQ(Convert("\33(J\\\33("), "\xA5\33(");
  EXPECT_EQ(Convert("\33$BF|\33"), std::string("\xE6\x97\xA5") + kUnknown);
  // The terminating NUL is no part of an escape.
  EXPECT_EQ(Convert("a\33(\0"sv), "a\33(");
}

TEST(ConvertIso2022Jp, TakesAnEscapeAtTheVeryEnd) {
  EXPECT_EQ(Convert("a\33(B"), "a");
  EXPECT_EQ(Convert("a\33$B"), "a");
  EXPECT_EQ(Convert("\33$BF|\33(J"), "\xE6\x97\xA5");
}

TEST(ConvertIso2022Jp, ReplacesBytesThatOpenNoPair) {
  const std::string unknown = kUnknown;
  for (int value = 0; value < 256; ++value) {
    const char first = static_cast<char>(value);
    if (first == '\r' || first == '\n' || first == '\x1B') continue;
    const bool isItself = value == 0x20 || value == 0x7F;
    const bool isSingle = value < 0x20 || value > 0x80 || (value >= 0x29 && value <= 0x2F) ||
                          (value >= 0x75 && value <= 0x7E);
    if (!isItself && !isSingle) continue;
    const std::string expected = isItself ? std::string(1, first) : unknown;
    std::string source = "\33$B";
    source += first;
    EXPECT_EQ(Convert(source + "F|\33(B"), expected + "\xE6\x97\xA5") << value;
  }
}

TEST(ConvertIso2022Jp, ReplacesPairsWithoutACharacter) {
  const std::string unknown = kUnknown;
  const std::string after = std::string("\xE6\x97\xA5");
  // Empty cells, cells after the row's end, and second bytes that are none.
  for (const std::string_view pair :
       {"\"/"sv, "#!"sv, "&Y"sv, "'r"sv, "(A"sv, "OT"sv, "t'"sv, "0\x7F"sv, "0\x80"sv, "0\xFF"sv,
        "0 "sv, "0\0"sv, "0\x1F"sv, "\x80\x21"sv, "\x80\xFF"sv, "\x80 "sv}) {
    EXPECT_EQ(Convert("\33$B" + std::string(pair) + "F|\33(B"), unknown + after) << pair;
  }
}

// Every row's first and last characters come out; 0x2C, whose row the table has, does not.
TEST(ConvertIso2022Jp, FindsTheRowOfEachFirstByte) {
  EXPECT_EQ(Convert("\33$B!A!@\33(B"), "\xEF\xBD\x9E\xEF\xBC\xBC");
  EXPECT_EQ(Convert("\33$B(@\33(B"), "\xE2\x95\x82");
  EXPECT_EQ(Convert("\33$B0!\33(B"), "\xE4\xBA\x9C");
  EXPECT_EQ(Convert("\33$BOS\33(B"), "\xE8\x85\x95");
  EXPECT_EQ(Convert("\33$Bt&\33(B"), "\xE7\x86\x99");
  EXPECT_EQ(Convert("\33$B^|^}^~\33(B"), "\xE6\xB7\xB9\xE6\xB8\x95\xE6\xB8\x8A");
  EXPECT_EQ(Convert("\33$B,F|\33(B"), std::string(kUnknown) + "\xE6\x97\xA5");
  EXPECT_EQ(Convert("\33$B-F|\33(B"), std::string(kUnknown) + "\xE6\x97\xA5");
}

TEST(ConvertIso2022Jp, StopsAtAPairThatTheRunCutsOff) {
  EXPECT_EQ(Convert("\33$BF|K\33(BK"), "\xE6\x97\xA5K");
  EXPECT_EQ(Convert("\33$BF|K\nK"), "\xE6\x97\xA5\nK");
  EXPECT_EQ(Convert("\33$BF|\x80\33(B"), "\xE6\x97\xA5");
  EXPECT_EQ(Convert("\33$BF|K"), "\xE6\x97\xA5");
}

TEST(ConvertIso2022Jp, ConvertsLongRuns) {
  for (const size_t pairs : {255U, 256U, 511U, 512U, 513U, 1024U, 5000U}) {
    std::string source = "\33$B ";
    std::string expected = " ";
    for (size_t i = 0; i < pairs; ++i) {
      source += "F|";
      expected += "\xE6\x97\xA5";
    }
    EXPECT_EQ(Convert(source + "K"), expected) << pairs;
    EXPECT_EQ(Convert(source + "\33(B."), expected + ".") << pairs;
  }
}

TEST(ConvertIso2022Jp, KeepsNulsInsideTheText) {
  EXPECT_EQ(Convert("a\0b\33(Jc\0\\\0"sv), "a\0bc\0\xA5"sv);
}

// A million escapes of each kind, a million lines of JIS X 0208 before one far escape, and a
// million unknown escapes after each of them: all pass by coming to an end.
TEST(ConvertIso2022Jp, ComesToAnEndOnMillionsOfEscapes) {
  std::string source;
  std::string expected;
  for (int i = 0; i < 250000; ++i) {
    source += "\33$BF|\33(J\\\33(B\33$B\n\33x";
    expected += "\xE6\x97\xA5\xA5\n\33x";
  }
  EXPECT_TRUE(Convert(source) == expected);

  source = "\33$B";
  for (int i = 0; i < 1000000; ++i) source += "\33x\n";
  const std::string lines = source.substr(3);
  EXPECT_TRUE(Convert(source + "\33(B") ==
              std::string(kUnknown) + kUnknown + "\n" + lines.substr(3));

  source = std::string(1000000, '\x1B');
  EXPECT_TRUE(Convert(source) == source);
  source = "\33(J" + std::string(1000000, '~');
  EXPECT_EQ(Convert(source).size(), 3000000U);
}

// The document of the text as it was, whatever allocation fails: the renaming is taken back.
TEST(ConvertIso2022Jp, LeavesTheTextAloneWithoutMemory) {
  std::string source = "charset=Iso-2022-JP;\\\33(J\\\33$B";
  for (int i = 0; i < 4000; ++i) source += "F\x09\x01|";
  for (const std::string& text : {source, source + '\0'}) {
    const auto round = [&](test::FaultedWork& faulted) {
      SizedBytes sized = Sized(text);
      const char* const block = sized.data();
      const Status status = faulted([&] { return ConvertIso2022Jp(sized, 0); });
      if (!faulted.isReached()) {
        EXPECT_EQ(status, StatusOk);
        EXPECT_EQ(sized.view().substr(0, 16), "charset=UTF-8;\\\xA5");
        return;
      }
      EXPECT_EQ(status, StatusOutOfMemory);
      EXPECT_EQ(sized.data(), block);
      EXPECT_EQ(sized.view(), text);
    };
    const uint64_t calls =
        test::SweepFaults(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom);
    EXPECT_GE(calls, 3U);
    EXPECT_LT(calls, 100U);
  }
}

TEST(ConvertIso2022Jp, LeavesTheTextAloneWhenTheBudgetIsRefused) {
  const std::string text = "iso-2022-jp\33(J\\" + std::string(9000000, 'a');
  SizedBytes sized = Sized(text);
  PlainKernelSetMemoryBudget(1000000);
  EXPECT_EQ(ConvertIso2022Jp(sized, 0), StatusOutOfMemory);
  EXPECT_TRUE(sized.view() == text);
  PlainKernelSetMemoryBudget(UINT64_MAX);
  EXPECT_EQ(ConvertIso2022Jp(sized, 0), StatusOk);
  EXPECT_EQ(sized.view().substr(0, 7),
            "UTF-8\xA5"
            "a");
}

TEST(AppendJisRoman, AppendsAfterTheOutput) {
  TrackedBuffer<char> output;
  ASSERT_EQ(AppendJisRoman(output, "a~\\"), StatusOk);
  ASSERT_EQ(AppendJisRoman(output, ""), StatusOk);
  ASSERT_EQ(AppendJisRoman(output, "~"), StatusOk);
  EXPECT_EQ(output.view(), "a\xE2\x80\xBE\\\xE2\x80\xBE");
}

TEST(AppendJisRoman, ReportsMissingMemory) {
  TrackedBuffer<char> output;
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(AppendJisRoman(output, "a"), StatusOutOfMemory);
  EXPECT_EQ(output.length(), 0U);
}

}  // namespace
}  // namespace tarn
