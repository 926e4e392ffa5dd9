#include "archive/catalogue/WordRank.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "archive/catalogue/CatalogueTables.h"

namespace tarn::archive {
namespace {

class WordRankTest : public testing::Test {
 protected:
  WordRankTest() : database_(":memory:", DatabaseUse::Make) {
    database_.run(kCatalogueTables);
    database_.run("COMMIT;");
  }

  void add(int64_t item, const std::string& subject, const std::string& body) {
    Statement insert(database_, "INSERT INTO words(rowid, subject, body) VALUES(?1, ?2, ?3)");
    insert.bind(1, item);
    insert.bind(2, subject);
    insert.bind(3, body);
    insert.execute();
  }

  std::vector<RankedItem> ranked(WordRank& rank, const std::string& query) {
    rank.begin();
    Statement rows(database_, "SELECT tarn_rank(words) FROM words WHERE words MATCH ?1");
    rows.bind(1, query);
    while (rows.step()) EXPECT_EQ(rows.number(0), 1);
    return rank.take();
  }

  // As FTS5 itself says it, to the last bit.
  void expectRanks(WordRank& rank, const std::string& query) {
    const std::vector<RankedItem> ranked = this->ranked(rank, query);
    Statement rows(database_,
                   "SELECT rowid, bm25(words, 10.0, 4.0, 2.0, 1.0, 0.7) FROM words"
                   " WHERE words MATCH ?1");
    rows.bind(1, query);
    size_t count = 0;
    for (; rows.step() && count < ranked.size(); ++count) {
      EXPECT_EQ(ranked[count].number, rows.number(0)) << query;
      EXPECT_EQ(ranked[count].rank, rows.real(1)) << query;
    }
    EXPECT_EQ(count, ranked.size()) << query;
    EXPECT_GT(count, 0u) << query;
  }

  Database database_;
};

TEST_F(WordRankTest, RanksAsFts5Does) {
  std::mt19937 generator(1);
  // Numbers that leave out few and many.
  int64_t item = 0;
  for (int each = 0; each < 400; ++each) {
    item += each % 50 == 0 ? 1000 : 1 + static_cast<int64_t>(generator() % 3);
    std::string texts[2];
    for (std::string& text : texts) {
      for (size_t left = generator() % 200; left != 0; --left) {
        text += generator() % 3 == 0 ? "common " : "w" + std::to_string(generator() % 60) + " ";
      }
    }
    add(item, texts[0], texts[1]);
  }
  WordRank rank(database_);
  for (const char* const query :
       {"common", "w1", "w1 w2", "w1 OR w2 OR common", "common NOT w3", "w1*", "subject:w5 w6",
        "\"common common\"", "\"w1 common\" OR w9", "common AND (w1 OR w2)", "w1 w1"}) {
    expectRanks(rank, query);
  }
}

TEST_F(WordRankTest, RanksLongItems) {
  std::string many;
  for (int each = 0; each < 20'000; ++each) many += "often ";
  add(1, "often", many);
  add(2, "", "often seldom");
  add(3, "seldom", "");
  add(4, "", "");
  WordRank rank(database_);
  expectRanks(rank, "often");
  expectRanks(rank, "often OR seldom");
}

TEST_F(WordRankTest, RanksItemsOfAnyNumber) {
  for (const int64_t item : {INT64_MIN + 1, int64_t{-5}, int64_t{0}, INT64_MAX - 1, INT64_MAX}) {
    add(item, "word", "of item");
  }
  WordRank rank(database_);
  expectRanks(rank, "word");
}

TEST_F(WordRankTest, TellsOfAnItemWithoutASize) {
  add(1, "word", "");
  add(2, "word", "");
  database_.run("DELETE FROM words_docsize WHERE id=2");
  WordRank rank(database_);
  EXPECT_THROW(ranked(rank, "word"), DatabaseError);
  EXPECT_EQ(ranked(rank, "word NOT word").size(), 0u);
}

TEST_F(WordRankTest, TakesSizesThatAreNoNumbers) {
  add(1, "word", "");
  database_.run("UPDATE words_docsize SET sz=x'FFFFFFFFFFFFFFFFFFFFFFFFFF'");
  WordRank rank(database_);
  EXPECT_EQ(ranked(rank, "word").size(), 1u);
}

}  // namespace
}  // namespace tarn::archive
