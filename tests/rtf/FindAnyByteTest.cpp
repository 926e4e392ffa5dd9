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
        ASSERT_EQ((FindAnyByte<'{', '\\', '\xFF'>({text.data(), length})), place) << length;
      }
    }
  }
}

TEST(FindAnyByte, FindsTheFirst) {
  for (size_t first = 0; first < 40; ++first) {
    std::vector<char> text = Dots(60);
    std::fill(text.begin() + static_cast<ptrdiff_t>(first), text.end(), '}');
    text.back() = '{';
    ASSERT_EQ((FindAnyByte<'{', '}'>({text.data(), text.size()})), first);
  }
}

TEST(FindAnyByte, GivesTheSizeWithoutOne) {
  for (size_t length = 0; length < 70; ++length) {
    const std::vector<char> text = Dots(length);
    ASSERT_EQ((FindAnyByte<'{', '}'>({text.data(), length})), length);
  }
  EXPECT_EQ((FindAnyByte<'{', '}'>({})), 0u);
}

// Only the very bytes count: not those with the same low bits, nor those after the end.
TEST(FindAnyByte, NoOtherByteCounts) {
  std::vector<char> text;
  for (int byte = 0; byte < 256; ++byte) {
    if (byte != '{' && byte != '}') text.push_back(static_cast<char>(byte));
  }
  text.push_back('{');
  const size_t last = text.size() - 1;
  EXPECT_EQ((FindAnyByte<'{', '}'>({text.data(), last})), last);
  EXPECT_EQ((FindAnyByte<'{', '}'>({text.data(), last + 1})), last);
}

}  // namespace
}  // namespace tarn
