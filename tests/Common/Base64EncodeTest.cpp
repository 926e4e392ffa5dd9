#include "Common/Base64Encode.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tarn {
namespace {

std::string Encoded(const std::string& bytes, uint64_t room = 100) {
  std::vector<char> out(room, '#');
  const uint64_t length = Base64Encode(out.data(), room, bytes.data(), bytes.size());
  if (length != 0) {
    EXPECT_EQ(out.at(length), '\0');
  }
  for (uint64_t i = length == 0 ? 0 : length + 1; i < room; ++i) EXPECT_EQ(out[i], '#') << i;
  return std::string(out.data(), length);
}

// RFC 4648, section 10.
TEST(Base64Encode, PublishedVectors) {
  EXPECT_EQ(Encoded("f"), "Zg==");
  EXPECT_EQ(Encoded("fo"), "Zm8=");
  EXPECT_EQ(Encoded("foo"), "Zm9v");
  EXPECT_EQ(Encoded("foob"), "Zm9vYg==");
  EXPECT_EQ(Encoded("fooba"), "Zm9vYmE=");
  EXPECT_EQ(Encoded("foobar"), "Zm9vYmFy");
}

TEST(Base64Encode, TheWholeAlphabetInOrder) {
  std::string bytes;
  for (unsigned i = 0; i < 64; i += 4) {
    const unsigned group = i << 18 | (i + 1) << 12 | (i + 2) << 6 | (i + 3);
    bytes += {static_cast<char>(group >> 16), static_cast<char>(group >> 8 & 0xFF),
              static_cast<char>(group & 0xFF)};
  }
  EXPECT_EQ(Encoded(bytes), "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
}

TEST(Base64Encode, BytesAbove127AndZeros) {
  EXPECT_EQ(Encoded(std::string("\xFF\xFE\xFD", 3)), "//79");
  EXPECT_EQ(Encoded(std::string("\0\0\0\0", 4)), "AAAAAA==");
  EXPECT_EQ(Encoded(std::string("\x80\0", 2)), "gAA=");
}

TEST(Base64Encode, CharactersAndNulMustFit) {
  EXPECT_EQ(Encoded("foo", 5), "Zm9v");
  EXPECT_EQ(Encoded("foo", 4), "");
  EXPECT_EQ(Encoded("foob", 9), "Zm9vYg==");
  EXPECT_EQ(Encoded("foob", 8), "");
  EXPECT_EQ(Encoded("f", 0), "");
  EXPECT_EQ(Base64Encode(nullptr, UINT64_MAX, nullptr, UINT64_MAX), 0u);
}

}  // namespace
}  // namespace tarn
