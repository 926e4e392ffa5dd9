#include "eml/FieldText.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "Tarnbase/PlainKernel.h"

namespace tarn {
namespace {

using namespace std::string_view_literals;

std::string Joined(const std::vector<std::string_view>& pieces) {
  FieldText text;
  for (const std::string_view piece : pieces) {
    EXPECT_EQ(text.append(piece.data(), piece.size()), 1);
  }
  SizedBytes field;
  text.moveTo(field);
  return std::string(field.view());
}

TEST(FieldText, EndsWithATerminatorThatCounts) {
  EXPECT_EQ(Joined({"a"}), "a\0"sv);
  EXPECT_EQ(Joined({""}), "\0"sv);
  EXPECT_EQ(Joined({"a", "", "b"}), "ab\0"sv);
}

TEST(FieldText, PieceThatEndsWithANulGetsNoSecond) {
  EXPECT_EQ(Joined({"a\0"sv}), "a\0"sv);
  EXPECT_EQ(Joined({"a\0"sv, "b"}), "ab\0"sv);
  EXPECT_EQ(Joined({"a\0\0"sv, "b"}), "a\0b\0"sv);
}

TEST(FieldText, AgreesWithAppendTerminated) {
  const std::vector<std::string_view> pieces = {"", "a", "\0"sv, "\0\0"sv, "b\0"sv, "", "cd", ""};
  FieldText text;
  SizedBytes other;
  for (const std::string_view piece : pieces) {
    ASSERT_EQ(text.append(piece.data(), piece.size()), 1);
    ASSERT_EQ(AppendTerminated(other, piece.data(), piece.size()), 1);
  }
  SizedBytes field;
  text.moveTo(field);
  EXPECT_EQ(field.view(), other.view());
}

TEST(FieldText, PieceAppendedAsItIsBringsItsOwnEnd) {
  FieldText text;
  ASSERT_EQ(text.append("a", 1), 1);
  ASSERT_EQ(text.appendAsIs("b", 1), 1);
  SizedBytes field;
  text.moveTo(field);
  EXPECT_EQ(field.view(), "ab"sv);
  EXPECT_EQ(field.data()[2], '\0');
}

TEST(FieldText, MovingReplacesTheField) {
  SizedBytes field;
  ASSERT_EQ(AppendTerminated(field, "old"), 1);
  FieldText text;
  ASSERT_EQ(text.append("new", 3), 1);
  text.moveTo(field);
  EXPECT_EQ(field.view(), "new\0"sv);
  FieldText nothing;
  nothing.moveTo(field);
  EXPECT_EQ(field.data(), nullptr);
  EXPECT_EQ(field.length(), 0u);
}

TEST(FieldText, HostHearsNothingOfAHugeField) {
  const std::string piece(9000000, 'a');
  PlainKernelSetMemoryBudget(1000);
  FieldText text;
  EXPECT_EQ(text.append(piece.data(), piece.size()), 1);
}

TEST(FieldText, WithoutMemoryItFails) {
  FieldText text;
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(text.append("a", 1), -1);
  EXPECT_EQ(text.append("b", 1), 1);
}

}  // namespace
}  // namespace tarn
