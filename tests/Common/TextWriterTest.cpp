#include "Common/TextWriter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tarnbase/PlainKernel.h"

namespace tarn {
namespace {

using namespace std::string_view_literals;
using Budget = TextWriter::Budget;

constexpr std::string_view kNul = "\0"sv;

std::string Joined(const std::vector<std::string_view>& pieces) {
  TextWriter text(256, Budget::Ignored);
  for (const std::string_view piece : pieces) text.append(piece);
  EXPECT_EQ(text.status(), StatusOk);
  return std::string(text.view());
}

TEST(TextWriter, WritesBytesAndNothingElse) {
  TextWriter text;
  EXPECT_EQ(text.view(), "");
  text.write("ab");
  text.write("");
  text.write("\0c"sv);
  EXPECT_EQ(text.view(), "ab\0c"sv);
  EXPECT_EQ(text.status(), StatusOk);
}

TEST(TextWriter, TerminatesOnce) {
  TextWriter text;
  text.terminate();
  EXPECT_EQ(text.view(), kNul);
  text.terminate();
  EXPECT_EQ(text.view(), kNul);
  text.write("a");
  text.terminate();
  EXPECT_EQ(text.view(), "\0a\0"sv);
}

TEST(TextWriter, AppendedTextEndsWithANulThatCounts) {
  EXPECT_EQ(Joined({"a"}), "a\0"sv);
  EXPECT_EQ(Joined({""}), kNul);
  EXPECT_EQ(Joined({"a", "", "b"}), "ab\0"sv);
}

TEST(TextWriter, AppendedPieceThatEndsWithANulGetsNoSecond) {
  EXPECT_EQ(Joined({"a\0"sv}), "a\0"sv);
  EXPECT_EQ(Joined({"a\0"sv, "b"}), "ab\0"sv);
  EXPECT_EQ(Joined({"a\0\0"sv, "b"}), "a\0b\0"sv);
}

TEST(TextWriter, AppendsAsASizedTextDoes) {
  const std::vector<std::string_view> pieces = {"", "a", kNul, "\0\0"sv, "b\0"sv, "", "cd", ""};
  SizedBytes other;
  for (const std::string_view piece : pieces) ASSERT_EQ(other.append(piece), StatusOk);
  EXPECT_EQ(Joined(pieces), other.view());
}

TEST(TextWriter, PieceAppendedAsItIsBringsItsOwnEnd) {
  TextWriter text;
  text.append("a");
  text.appendAsIs("b");
  EXPECT_EQ(text.view(), "ab"sv);
  text.appendAsIs("c\0"sv);
  EXPECT_EQ(text.view(), "abc\0"sv);
  text.appendAsIs("");
  SizedBytes field;
  text.moveInto(field);
  EXPECT_EQ(field.view(), "abc"sv);
  EXPECT_EQ(field.data()[3], '\0');
}

TEST(TextWriter, MovingReplacesTheTarget) {
  SizedBytes field;
  ASSERT_EQ(field.append("old"), StatusOk);
  TextWriter text;
  text.append("new");
  text.moveInto(field);
  EXPECT_EQ(field.view(), "new\0"sv);
  EXPECT_EQ(text.view(), "");
  TextWriter nothing;
  nothing.moveInto(field);
  EXPECT_FALSE(field.hasBlock());
  EXPECT_EQ(field.length(), 0u);
}

TEST(TextWriter, GrowsByItsStep) {
  TextWriter text(4);
  text.reserve(10);
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  text.write("12345678901234");  // 10 and a step
  EXPECT_EQ(text.status(), StatusOk);
  text.write("5");
  PlainKernelFailAt(PlainKernelFaultMemory, 0);
  EXPECT_EQ(text.status(), StatusOutOfMemory);
}

TEST(TextWriter, FirstFailureSticks) {
  for (void (*const fail)(TextWriter&) :
       {+[](TextWriter& text) { text.write("b"); }, +[](TextWriter& text) { text.append("b"); },
        +[](TextWriter& text) { text.appendAsIs("b"); },
        +[](TextWriter& text) { text.terminate(); }, +[](TextWriter& text) { text.reserve(9); }}) {
    TextWriter text(0, Budget::Ignored);
    text.write("a");
    PlainKernelFailAt(PlainKernelFaultMemory, 1);
    fail(text);
    PlainKernelFailAt(PlainKernelFaultMemory, 0);
    text.reserve(100);
    text.write("c");
    text.terminate();
    text.append("d");
    text.appendAsIs("e");
    EXPECT_EQ(text.status(), StatusOutOfMemory);
    EXPECT_EQ(text.view(), "a");
  }
}

TEST(TextWriter, HostHearsOfAHugeTextThatCounts) {
  const std::string piece(9000000, 'a');
  PlainKernelSetMemoryBudget(1000);
  TextWriter counted;
  counted.write(piece);
  EXPECT_EQ(counted.status(), StatusOutOfMemory);
  TextWriter ignored(1024, Budget::Ignored);
  ignored.append(piece);
  EXPECT_EQ(ignored.status(), StatusOk);
  EXPECT_EQ(ignored.view().size(), piece.size() + 1);
}

}  // namespace
}  // namespace tarn
