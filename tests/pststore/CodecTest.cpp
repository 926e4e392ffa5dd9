#include "pststore/Codec.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <string>

#include "pststore/CodecTables.h"
#include "support/pst/CryptTables.h"
#include "support/pst/PstBytes.h"

namespace {

using namespace pststore::disk;

std::string Text(std::initializer_list<int> bytes) {
  std::string text;
  for (const int byte : bytes) text += static_cast<char>(byte);
  return text;
}

std::string Permuted(std::string text) {
  decode_permute(tarn::test::RoomOf(text));
  return text;
}

std::string Cycled(std::string text, uint32_t key) {
  decode_cyclic(tarn::test::RoomOf(text), key);
  return text;
}

TEST(PstCodecTest, TablesAreThePublishedOnes) {
  EXPECT_TRUE(std::equal(mpbb_r.begin(), mpbb_r.end(), tarn::test::kMpbbR.begin()));
  EXPECT_TRUE(std::equal(mpbb_s.begin(), mpbb_s.end(), tarn::test::kMpbbS.begin()));
  EXPECT_TRUE(std::equal(mpbb_i.begin(), mpbb_i.end(), tarn::test::kMpbbI.begin()));
}

TEST(PstCodecTest, TablesBeginAsPublished) {
  EXPECT_EQ(Text({0x41, 0x36, 0x13, 0x62}), std::string(mpbb_r.begin(), mpbb_r.begin() + 4));
  EXPECT_EQ(Text({0x14, 0x53, 0x0F, 0x56}), std::string(mpbb_s.begin(), mpbb_s.begin() + 4));
  EXPECT_EQ(Text({0x47, 0xF1, 0xB4, 0xE6}), std::string(mpbb_i.begin(), mpbb_i.begin() + 4));
}

TEST(PstCodecTest, TablesInvertEachOther) {
  for (size_t i = 0; i < 256; ++i) {
    EXPECT_EQ(i, mpbb_i[mpbb_r[i]]);
    EXPECT_EQ(i, mpbb_r[mpbb_i[i]]);
    EXPECT_EQ(i, mpbb_s[mpbb_s[i]]);
  }
}

TEST(PstCodecTest, PermutedTextOfEveryShortLength) {
  // Lengths on both sides of whole words.
  const std::string encoded = Text({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16});
  const std::string decoded = Text({0x47, 0xF1, 0xB4, 0xE6, 0x0B, 0x6A, 0x72, 0x48, 0x85, 0x4E,
                                    0x9E, 0xEB, 0xE2, 0xF8, 0x94, 0x53, 0xE0});
  for (size_t length = 0; length <= encoded.size(); ++length) {
    EXPECT_EQ(decoded.substr(0, length), Permuted(encoded.substr(0, length)));
  }
}

// Bytes one by one and as a whole: where many are decoded at once, every value and length counts.
TEST(PstCodecTest, PermutedTextOfEveryLength) {
  std::string encoded;
  for (size_t i = 0; i < 600; ++i) encoded += static_cast<char>(i * 167 + i / 256);
  std::string decoded;
  for (const char byte : encoded) decoded += Permuted(std::string(1, byte));
  for (size_t length = 0; length <= encoded.size(); ++length) {
    ASSERT_EQ(decoded.substr(0, length), Permuted(encoded.substr(0, length))) << length;
  }
}

TEST(PstCodecTest, PermutationLeavesWhatFollows) {
  std::string text = "Hello, store";
  decode_permute(tarn::test::RoomOf(text).first(9));
  EXPECT_EQ(Text({0x28, 0xDA, 0xCD, 0xCD, 0xD3, 0x6B, 0x39, 0xD6, 0x14}) + "ore", text);
  std::string many(200, '\0');
  decode_permute(tarn::test::RoomOf(many).first(150));
  EXPECT_EQ(std::string(150, 0x47) + std::string(50, '\0'), many);
}

TEST(PstCodecTest, CyclicTextDependsOnTheKey) {
  EXPECT_EQ(Text({0xF1, 0x2F, 0xAB, 0x7E, 0xD5, 0xC7, 0xFD, 0xDF, 0x7E, 0x17, 0x7C, 0xFE}),
            Cycled("Hello, store", 4));
  EXPECT_EQ("", Cycled("", 4));
}

TEST(PstCodecTest, CyclicKeyFoldsItsHalves) {
  const std::string decoded =
      Text({0xFB, 0xEA, 0xDC, 0x70, 0x6B, 0xC5, 0x23, 0xA9, 0xAC, 0xBA, 0xAA, 0x59});
  EXPECT_EQ(decoded, Cycled("Hello, store", 0x12345678));
  EXPECT_EQ(decoded, Cycled("Hello, store", 0x1234 ^ 0x5678));
}

TEST(PstCodecTest, CyclicCounterCarriesIntoItsUpperHalf) {
  const std::string zeros(4, '\0');
  EXPECT_EQ(Text({0x1A, 0xBD, 0x0C, 0xA3}), Cycled(zeros, 0xFE));
  EXPECT_EQ(Text({0x0C, 0xA3}), Cycled(zeros.substr(2), 0x100));
}

TEST(PstCodecTest, CyclicCounterWraps) {
  const std::string zeros(6, '\0');
  EXPECT_EQ(Text({0x9C, 0x12, 0x17, 0xB9, 0x32, 0xA2}), Cycled(zeros, 0xFFFD));
  EXPECT_EQ(Text({0xB9, 0x32, 0xA2}), Cycled(zeros.substr(3), 0));
}

TEST(PstCodecTest, CyclicDecodingUndoesThePublishedEncoding) {
  // The encoding runs the steps backwards; every counter of 16 bits is met.
  std::string plain;
  for (size_t i = 0; i < 70000; ++i) plain += static_cast<char>(i * 7 + i / 256);
  std::string encoded = plain;
  uint32_t w = 0x0124;
  for (char& c : encoded) {
    uint32_t b = static_cast<uint8_t>(c);
    b = tarn::test::kMpbbR[(b + w) & 0xFF];
    b = tarn::test::kMpbbS[(b + (w >> 8)) & 0xFF];
    b = tarn::test::kMpbbI[(b - (w >> 8)) & 0xFF];
    c = static_cast<char>(b - w);
    w = (w + 1) & 0xFFFF;
  }
  // The steps are their own inverse.
  EXPECT_EQ(plain, Cycled(encoded, 0x0124));
  EXPECT_EQ(encoded, Cycled(plain, 0x0124));
}

}  // namespace
