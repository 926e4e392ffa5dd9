#include "Common/Crc32.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "Common/LittleEndian.h"

namespace tarn {
namespace {

uint32_t Of(const std::string& bytes) { return Crc32(bytes.data(), bytes.size()); }

TEST(Crc32, KnownValues) {
  EXPECT_EQ(Crc32(nullptr, 0), 0u);
  EXPECT_EQ(Of("\x01"), 0x77073096u);
  EXPECT_EQ(Of("\x80"), 0xEDB88320u);
  EXPECT_EQ(Of("\xFF"), 0x2D02EF8Du);
  EXPECT_EQ(Of("123456789"), 0x2DFD2D88u);
}

// The contents of the first example of MS-OXRTFCP, 4.1.1, whose header names the value.
TEST(Crc32, OfThePublishedExample) {
  EXPECT_EQ(Of(std::string("\x03\x00\x0A\x00\x72\x63\x70\x67\x31\x32\x35\x42\x32\x0A\xF3\x20"
                           "\x68\x65\x6C\x09\x00\x20\x62\x77\x05\xB0\x6C\x64\x7D\x0A\x80\x0F\xA0",
                           33)),
            0xA7C7C5F1u);
}

TEST(Crc32, ZerosAtTheBeginningChangeNothing) {
  EXPECT_EQ(Of(std::string(100, '\0')), 0u);
  EXPECT_EQ(Of(std::string(13, '\0') + "123456789"), 0x2DFD2D88u);
}

// Bit by bit, as the polynomial division is defined.
uint32_t Divide(const std::string& bytes) {
  uint32_t remainder = 0;
  for (const char byte : bytes) {
    remainder ^= static_cast<unsigned char>(byte);
    for (int bit = 0; bit < 8; ++bit) {
      remainder = (remainder & 1) != 0 ? (remainder >> 1) ^ 0xEDB88320u : remainder >> 1;
    }
  }
  return remainder;
}

TEST(Crc32, EveryLengthAndEveryPlaceOfTheBlocks) {
  std::mt19937 random(1);
  std::string bytes(300, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  for (size_t start = 0; start < 9; ++start) {
    for (size_t length = 0; start + length <= bytes.size(); ++length) {
      const std::string part = bytes.substr(start, length);
      ASSERT_EQ(Crc32(bytes.data() + start, length), Divide(part)) << start << " " << length;
    }
  }
}

TEST(Crc32, LongRuns) {
  std::mt19937 random(3);
  std::string bytes(100000, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  EXPECT_EQ(Of(bytes), Divide(bytes));
  EXPECT_EQ(Of(std::string(5000, '\xFF')), Divide(std::string(5000, '\xFF')));
  EXPECT_EQ(Of(std::string(5000, '\0') + 'x'), Divide("x"));
}

TEST(Crc32, GoesOnWhereTheBytesBeforeEnded) {
  std::mt19937 random(2);
  std::string bytes(500, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  for (size_t cut = 0; cut <= bytes.size(); ++cut) {
    const uint32_t before = Crc32(bytes.data(), cut);
    ASSERT_EQ(Crc32(bytes.data() + cut, bytes.size() - cut, before), Divide(bytes)) << cut;
  }
}

TEST(LittleEndian, TheLeastSignificantByteComesFirst) {
  const unsigned char bytes[] = {0x01, 0x82, 0x03, 0x84, 0x05, 0x86, 0x07, 0x88};
  EXPECT_EQ(LoadLittleEndian<uint8_t>(bytes), 0x01u);
  EXPECT_EQ(LoadLittleEndian<uint16_t>(bytes), 0x8201u);
  EXPECT_EQ(LoadLittleEndian<uint32_t>(bytes), 0x84038201u);
  EXPECT_EQ(LoadLittleEndian<uint64_t>(bytes), 0x8807860584038201u);
  EXPECT_EQ(LoadLittleEndian<uint32_t>(bytes + 1), 0x05840382u);
}

}  // namespace
}  // namespace tarn
