// The unpacking itself, on inputs and blocks that end where their heap blocks do, so that a byte
// read or written outside is noticed.
#include "rtf/LzfuUnpack.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "NaiveLzfu.h"

namespace tarn::test {
namespace {

// The position reached, which has to be that of the plain loop, with the same bytes before it.
uint64_t Unpack(std::string_view contents, size_t room, size_t end) {
  std::vector<unsigned char> packed(contents.begin(), contents.end());
  packed.shrink_to_fit();
  std::vector<unsigned char> block(room);
  std::copy(kLzfuFixedText.begin(), kLzfuFixedText.end(), block.begin());
  const uint64_t reached = UnpackLzfu(packed, block, end);

  std::string expected(room, '\0');
  EXPECT_EQ(reached, UnpackPlainly(contents, expected, end));
  EXPECT_TRUE(std::equal(block.begin(), block.begin() + static_cast<ptrdiff_t>(reached),
                         expected.begin(),
                         [](unsigned char a, char b) { return static_cast<char>(a) == b; }));
  return reached;
}

// Groups that end with a literal, for which 17 bytes would be copied where there is room, and then
// fewer than these until the input ends. The text is long enough for a whole group.
TEST(UnpackLzfu, ALastLiteralReadsNothingAfterTheInput) {
  for (uint32_t references = 1; references <= 7; ++references) {
    for (uint32_t after = 1; after <= 8; ++after) {
      LzfuTokens tokens;
      for (uint32_t i = 0; i < references; ++i) tokens.reference(i, 17);
      for (uint32_t i = references; i < 8; ++i) tokens.literals("x");
      for (uint32_t i = 0; i < after; ++i) tokens.reference(i, 17);
      const size_t end = 207 + 17 * references + (8 - references) + 17 * after;
      EXPECT_EQ(Unpack(tokens.bytes(), end, end), end) << references << " " << after;
      EXPECT_EQ(Unpack(tokens.bytes(), end + 500, end + 1), 0U) << references << " " << after;
      EXPECT_EQ(Unpack(tokens.bytes(), end - 1, end - 1), 0U) << references << " " << after;
    }
  }
}

// However little is left of the input or the block, of texts with all kinds of groups.
TEST(UnpackLzfu, EveryCutOfTheInputAndOfTheBlock) {
  std::mt19937 random(31);
  for (int i = 0; i < 20; ++i) {
    LzfuTokens tokens;
    size_t end = 207;
    while (end < 207 + 400) {
      const auto length = 2 + static_cast<uint32_t>(random() % 16);
      const bool isLiteral = random() % 3 == 0;
      if (isLiteral) {
        tokens.literals("x");
      } else {
        tokens.back(1 + static_cast<uint32_t>(random() % 207), length);
      }
      end += isLiteral ? 1 : length;
    }
    const std::string& contents = tokens.bytes();
    ASSERT_EQ(Unpack(contents, end, end), end);
    for (size_t size = 0; size < contents.size(); ++size) {
      ASSERT_EQ(Unpack(std::string_view(contents).substr(0, size), end, end), 0U) << size;
    }
    for (size_t cut = 207; cut < end; ++cut) {
      Unpack(contents, cut, cut);
      Unpack(contents, cut + 1, cut);
      ASSERT_NE(Unpack(contents, cut + 16, cut), 0U) << cut;
    }
  }
}

TEST(UnpackLzfu, ATextOfNoBytesReadsNothing) { EXPECT_EQ(Unpack("", 207, 207), 207U); }

TEST(LongestUnpackedText, CountsTheLastGroup) {
  EXPECT_EQ(LongestUnpackedText(0), 0u);
  EXPECT_EQ(LongestUnpackedText(1), 0u);   // a control byte
  EXPECT_EQ(LongestUnpackedText(2), 1u);   // and a literal
  EXPECT_EQ(LongestUnpackedText(3), 17u);  // or a reference
  EXPECT_EQ(LongestUnpackedText(4), 18u);
  EXPECT_EQ(LongestUnpackedText(16), 120u);
  EXPECT_EQ(LongestUnpackedText(17), 136u);
  EXPECT_EQ(LongestUnpackedText(18), 136u);
  EXPECT_EQ(LongestUnpackedText(19), 137u);
  EXPECT_EQ(LongestUnpackedText(20), 153u);
  EXPECT_EQ(LongestUnpackedText(1700), 13600u);
}

}  // namespace
}  // namespace tarn::test
