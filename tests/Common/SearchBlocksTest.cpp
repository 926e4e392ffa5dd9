// The blocks as a compiler without optimisation makes them: their vectors lie on the stack, which
// not every system aligns to 32 bytes.
#include "Common/SearchBlocks.h"

#include <gtest/gtest.h>

#include <string>

namespace tarn::search {
namespace {

constexpr Anchor kFirst = {.offset = 0, .value = 'a', .caseBit = 0x20};
constexpr Anchor kSecond = {.offset = 3, .value = '=', .caseBit = 0};

// Of 16 rows the seventh has "A..=".
std::string Rows() {
  std::string rows(16 * kManyPlaces + 3, 'x');
  rows.replace(7 * kManyPlaces + 33, 4, "A--=");
  return rows;
}

// With so many bytes more on the stack.
template <typename Block, size_t kBytes>
[[gnu::noinline]] uint64_t EmptyRows(const std::string& rows) {
  volatile char room[kBytes] = {};
  const Block block(kFirst, kSecond);
  return block.emptyRows(rows.data() + room[kBytes - 1], 16);
}

template <typename Block>
void ExpectAnswers() {
  const std::string rows = Rows();
  EXPECT_EQ((EmptyRows<Block, 16>(rows)), 7u);
  EXPECT_EQ((EmptyRows<Block, 32>(rows)), 7u);
  EXPECT_EQ((EmptyRows<Block, 48>(rows)), 7u);
  EXPECT_EQ((EmptyRows<Block, 64>(rows)), 7u);
  const Block block(kFirst, kSecond);
  EXPECT_EQ(block.many(rows.data() + 7 * kManyPlaces), uint64_t{1} << 33);
  EXPECT_EQ(block.many(rows.data()), 0u);
  EXPECT_EQ(block.emptyRows(rows.data(), 7), 7u);
}

TEST(SearchBlocks, OfWords) { ExpectAnswers<WordBlock>(); }

#if defined(__SSE2__)
TEST(SearchBlocks, OfVectors) { ExpectAnswers<VectorBlock>(); }

TEST(SearchBlocks, OfWideVectorsWhereTheProcessorHasThem) {
  if (WideBlock::IsAvailable()) ExpectAnswers<WideBlock>();
}
#endif

}  // namespace
}  // namespace tarn::search
