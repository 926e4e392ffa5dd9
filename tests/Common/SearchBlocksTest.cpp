#include "Common/SearchBlocks.h"

#include <gtest/gtest.h>

#include <string>

namespace tarn::search {
namespace {

constexpr Anchor kLetter = {.offset = 0, .value = 'a', .caseBit = 0x20};
constexpr Anchor kSign = {.offset = 3, .value = '=', .caseBit = 0};

// Each place alone, then all of them.
template <typename Block>
void ExpectAnswers() {
  const Block block(kLetter, kSign);
  const std::string none(kManyPlaces + 3, 'x');
  EXPECT_EQ(block.many(none.data()), 0u);
  EXPECT_EQ(block.few(none.data()), 0u);
  for (uint64_t place = 0; place < kManyPlaces; ++place) {
    std::string text = none;
    text.replace(place, 4, place % 2 == 0 ? "A--=" : "a--=");
    EXPECT_EQ(block.many(text.data()), uint64_t{1} << place);
    if (place < Block::kFewPlaces) {
      EXPECT_EQ(block.few(text.data()), uint64_t{1} << place);
    }
  }
  const Block sames({.offset = 0, .value = 'x', .caseBit = 0},
                    {.offset = 3, .value = 'x', .caseBit = 0});
  EXPECT_EQ(sames.many(none.data()), ~uint64_t{0});
  EXPECT_EQ(sames.few(none.data()), (uint64_t{1} << Block::kFewPlaces) - 1);
}

// One of the two anchors is not enough.
template <typename Block>
void ExpectNoAnswers() {
  const Block block(kLetter, kSign);
  EXPECT_EQ(block.many(std::string(kManyPlaces + 3, 'a').data()), 0u);
  EXPECT_EQ(block.many(std::string(kManyPlaces + 3, '=').data()), 0u);
}

TEST(SearchBlocks, OfWords) {
  ExpectAnswers<WordBlock>();
  ExpectNoAnswers<WordBlock>();
}

#if defined(__SSE2__)
TEST(SearchBlocks, OfVectors) {
  ExpectAnswers<VectorBlock>();
  ExpectNoAnswers<VectorBlock>();
}
#endif

}  // namespace
}  // namespace tarn::search
