#include "archive/catalogue/WordIndex.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "archive/catalogue/CatalogueTables.h"
#include "support/TempDirectory.h"

namespace tarn::archive {
namespace {

struct Text {
  int64_t item;
  uint8_t column;
  std::string text;
};

// An index by this class and one of the same texts by FTS5.
class WordIndexTest : public testing::Test {
 protected:
  void write(const std::vector<Text>& texts, int64_t items, const WordIndexLimits& limits = {}) {
    Database own(path("own"), DatabaseUse::Make);
    own.run(kCatalogueTables);
    {
      WordIndex index(own, path("own"), limits);
      auto text = texts.begin();
      for (int64_t item = 1; item <= items; ++item) {
        index.beginItem(item);
        for (; text != texts.end() && text->item == item; ++text) {
          index.add(text->column, text->text);
        }
      }
      index.finish();
    }
    own.run("COMMIT;");

    Database other(path("other"), DatabaseUse::Make);
    other.run(kCatalogueTables);
    Statement insert(other,
                     "INSERT INTO words(rowid, subject, sender, recipients, body, attachments)"
                     " VALUES(?1, ?2, ?3, ?4, ?5, ?6)");
    auto text = texts.begin();
    for (int64_t item = 1; item <= items; ++item) {
      std::string columns[kWordColumns];
      for (; text != texts.end() && text->item == item; ++text) {
        columns[text->column] += text->text + "\n";
      }
      insert.bind(1, item);
      for (int column = 0; column < 5; ++column) insert.bind(column + 2, columns[column]);
      insert.execute();
    }
    other.run("COMMIT;");
  }

  // Everything that is in the index, and what FTS5 says of it.
  std::string contents(const char* name) {
    Database database(path(name), DatabaseUse::Make);
    database.run(
        "INSERT INTO words(words) VALUES('integrity-check');"
        "CREATE VIRTUAL TABLE temp.terms USING fts5vocab(main, words, instance);");
    std::string all;
    Statement terms(database, "SELECT term, doc, col, offset FROM temp.terms");
    while (terms.step()) {
      for (int column = 0; column < 4; ++column) all += terms.text(column) + " ";
      all += '\n';
    }
    Statement sizes(database, "SELECT id, hex(sz) FROM words_docsize ORDER BY id");
    while (sizes.step()) all += sizes.text(0) + " " + sizes.text(1) + '\n';
    Statement averages(database, "SELECT hex(block) FROM words_data WHERE id=1");
    while (averages.step()) all += averages.text(0) + '\n';
    return all;
  }

  int64_t number(const char* name, const std::string& question) {
    Database database(path(name), DatabaseUse::Read);
    Statement statement(database, question);
    return statement.step() ? statement.number(0) : -1;
  }

  // The items that a query finds, by both, backward too.
  void expectFoundAlike(const std::string& query) {
    for (const char* const order : {"ASC", "DESC"}) {
      std::string found[2];
      for (size_t each = 0; each < 2; ++each) {
        Database database(path(each == 0 ? "own" : "other"), DatabaseUse::Read);
        Statement rows(database,
                       "SELECT rowid, bm25(words) FROM words WHERE words MATCH ?1"
                       " ORDER BY rowid " +
                           std::string(order));
        rows.bind(1, query);
        while (rows.step()) found[each] += rows.text(0) + " " + rows.text(1) + "\n";
      }
      EXPECT_FALSE(found[0].empty()) << query;
      EXPECT_EQ(found[0], found[1]) << query;
    }
  }

  std::string path(const std::string& name) const { return (directory_.path() / name).string(); }

  test::TempDirectory directory_;
};

// Words of which some are in every text and most in one.
class Texts {
 public:
  std::string next(size_t words) {
    std::string text;
    for (size_t each = 0; each < words; ++each) {
      const size_t drawn = generator_() % 100;
      if (drawn < 50) text += "common ";
      if (drawn >= 50 && drawn < 75) text += "Word" + std::to_string(generator_() % 50) + ", ";
      if (drawn >= 75) text += "rare" + std::to_string(generator_() % 100000) + "\n";
    }
    return text;
  }

  size_t below(size_t end) { return generator_() % end; }

 private:
  std::mt19937 generator_{1};
};

TEST_F(WordIndexTest, HoldsWhatFts5WouldHold) {
  Texts texts;
  std::vector<Text> all;
  for (int64_t item = 1; item <= 500; ++item) {
    for (uint8_t column = 0; column < kWordColumns; ++column) {
      const size_t parts = texts.below(3);
      for (size_t part = 0; part < parts; ++part) {
        all.push_back({item, column, texts.next(texts.below(60))});
      }
    }
  }
  write(all, 500, {100'000, 1000});
  EXPECT_EQ(contents("own"), contents("other"));
  EXPECT_GT(number("own", "SELECT count(DISTINCT segid) FROM words_idx"), 4);
  for (const char* const query : {"common", "word7 word8", "subject:word7", "\"common word3\"",
                                  "rare1*", "common NOT word1"}) {
    expectFoundAlike(query);
  }
}

TEST(WordGathererTest, LeavesOutWhatIsMoreThanAColumnMayHave) {
  WordGatherer gatherer(1 << 20, 3);
  ItemTextsToIndex texts;
  texts.add(1, 0, "a b c d e");
  texts.add(1, 0, "f");
  texts.add(1, 1, "g h");
  texts.add(2, 0, "i j k");
  gatherer.give(std::move(texts));
  const WordGatherer::Gathered gathered = gatherer.take();
  ASSERT_EQ(gathered.sizes.size(), 2u);
  EXPECT_EQ(gathered.sizes[0].words, (std::array<uint32_t, kWordColumns>{3, 2, 0, 0, 0}));
  EXPECT_EQ(gathered.sizes[1].words, (std::array<uint32_t, kWordColumns>{3, 0, 0, 0, 0}));
}

TEST_F(WordIndexTest, MayBeEmpty) {
  write({}, 0);
  EXPECT_EQ(contents("own"), contents("other"));
}

TEST_F(WordIndexTest, MayHaveItemsWithoutWords) {
  write({{2, 3, "one"}}, 3);
  EXPECT_EQ(contents("own"), contents("other"));
}

TEST_F(WordIndexTest, HoldsWordsOfAnyScript) {
  write({{1, 0, "Caf\u00e9 stra\u00dfe"},
         {1, 3, "\u65e5\u672c\u8a9e \u0416\u0443\u043a"},
         {2, 3, "\u0627\u0644\u0633\u0644\u0627\u0645 \U0001F600 \U00010400x"}},
        2);
  EXPECT_EQ(
      number("own", "SELECT rowid FROM words WHERE words MATCH '\"\u65e5\u672c \u672c\u8a9e\"'"),
      1);
  EXPECT_EQ(number("own", "SELECT rowid FROM words WHERE words MATCH 'subject:cafe'"), 1);
  EXPECT_EQ(
      number("own",
             "SELECT count(*) FROM words WHERE words MATCH '\u0627\u0644\u0633\u0644\u0627\u0645'"),
      1);
}

TEST_F(WordIndexTest, HoldsLongWords) {
  const std::string word(40'000, 'x');
  write({{1, 3, "a " + word + " b"}, {2, 3, word + "y " + std::string(5000, 'z')}}, 2);
  EXPECT_EQ(contents("own"), contents("other"));
}

// Lists that go on over many pages have an index, with which a search passes over pages.
TEST_F(WordIndexTest, HoldsLongLists) {
  std::vector<Text> all;
  std::string often;
  for (int each = 0; each < 50'000; ++each) often += each % 1000 == 0 ? "seldom " : "often ";
  for (int64_t item = 1; item <= 20'000; ++item) {
    all.push_back({item, 0, "each"});
    if (item == 700 || item == 15'000) all.push_back({item, 3, often});
    if (item == 19'999) all.push_back({item, 3, "last often"});
  }
  write(all, 20'000);
  EXPECT_EQ(contents("own"), contents("other"));
  constexpr const char* kListIndexes = "SELECT count(*) FROM words_data WHERE id>>36&1";
  EXPECT_GT(number("own", kListIndexes), 1);
  for (const char* const query : {"each AND last", "often AND last", "each AND seldom", "often"}) {
    expectFoundAlike(query);
  }
}

TEST_F(WordIndexTest, MergesWhatIsMoreThanFts5Takes) {
  Texts texts;
  std::vector<Text> all;
  for (int64_t item = 1; item <= 600; ++item) all.push_back({item, 3, texts.next(100)});
  write(all, 600, {40'000, 4});
  EXPECT_EQ(contents("own"), contents("other"));
  EXPECT_LE(number("own", "SELECT count(DISTINCT segid) FROM words_idx"), 4);
  expectFoundAlike("word1 common");
}

TEST_F(WordIndexTest, TakesFurtherItemsFromFts5) {
  write({{1, 3, "first of all"}}, 1);
  Database database(path("own"), DatabaseUse::Make);
  database.run(
      "INSERT INTO words(rowid, body) VALUES(2, 'second of all');"
      "INSERT INTO words(words) VALUES('optimize');"
      "INSERT INTO words(words) VALUES('integrity-check');");
  Statement found(database, "SELECT count(*) FROM words WHERE words MATCH '\"of all\"'");
  ASSERT_TRUE(found.step());
  EXPECT_EQ(found.number(0), 2);
}

}  // namespace
}  // namespace tarn::archive
