#include "rtf/FindAnyByte.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>
#include <vector>

namespace tarn {
namespace {

// A stretch that ends where its heap block does.
std::vector<char> Dots(size_t length) { return std::vector<char>(length, '.'); }

TEST(FindAnyByte, FindsEachByteAtEveryPlace) {
  for (size_t length = 0; length < 70; ++length) {
    for (size_t place = 0; place < length; ++place) {
      for (const char byte : {'{', '\\', '\xFF'}) {
        std::vector<char> text = Dots(length);
        text[place] = byte;
        const char* const start = text.data();
        const char* const found = FindAnyByte<'{', '\\', '\xFF'>(start, start + length);
        ASSERT_EQ(found - start, static_cast<ptrdiff_t>(place)) << length;
      }
    }
  }
}

TEST(FindAnyByte, FindsTheFirst) {
  for (size_t first = 0; first < 40; ++first) {
    std::vector<char> text = Dots(60);
    std::fill(text.begin() + static_cast<ptrdiff_t>(first), text.end(), '}');
    text.back() = '{';
    const char* const start = text.data();
    const char* const found = FindAnyByte<'{', '}'>(start, start + text.size());
    ASSERT_EQ(found - start, static_cast<ptrdiff_t>(first));
  }
}

TEST(FindAnyByte, GivesTheEndWithoutOne) {
  for (size_t length = 0; length < 70; ++length) {
    const std::vector<char> text = Dots(length);
    const char* const end = text.data() + length;
    ASSERT_EQ((FindAnyByte<'{', '}'>(text.data(), end)), end) << length;
  }
  EXPECT_EQ((FindAnyByte<'{', '}'>(nullptr, nullptr)), nullptr);
}

// Only the very bytes count: not those with the same low bits, nor those behind the end.
TEST(FindAnyByte, NoOtherByteCounts) {
  std::vector<char> text;
  for (int byte = 0; byte < 256; ++byte) {
    if (byte != '{' && byte != '}') text.push_back(static_cast<char>(byte));
  }
  text.push_back('{');
  const char* const end = text.data() + text.size() - 1;
  EXPECT_EQ((FindAnyByte<'{', '}'>(text.data(), end)), end);
  EXPECT_EQ((FindAnyByte<'{', '}'>(text.data(), end + 1)), end);
}

}  // namespace
}  // namespace tarn
