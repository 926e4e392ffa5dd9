#include "archive/catalogue/IndexWords.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace tarn::archive {
namespace {

// Each word with its place, as an index of SQLite's holds them.
std::string WordsOfSqlite(std::string_view text) {
  Database database(":memory:", DatabaseUse::Make);
  database.run(
      "CREATE VIRTUAL TABLE words USING fts5(body, content='',"
      " tokenize=\"unicode61 remove_diacritics 2 categories 'L* N* Co M*'\");"
      "CREATE VIRTUAL TABLE terms USING fts5vocab(words, instance);");
  Statement insert(database, "INSERT INTO words(rowid, body) VALUES(1, ?1)");
  insert.bind(1, text);
  insert.execute();
  std::string words;
  Statement terms(database, "SELECT term, offset FROM terms ORDER BY offset");
  while (terms.step()) words += std::to_string(terms.number(1)) + ":" + terms.text(0) + " ";
  return words;
}

std::string OwnWords(std::string_view text) {
  std::string words;
  size_t place = 0;
  IndexWords().split(text, [&](std::string_view word) {
    words += std::to_string(place++) + ":" + std::string(word.substr(0, 32768)) + " ";
  });
  return words;
}

TEST(IndexWordsTest, AreLettersAndDigits) {
  EXPECT_EQ(OwnWords("the plan_b, of 2024-05: a.b@c"),
            "0:the 1:plan 2:b 3:of 4:2024 5:05 6:a 7:b 8:c ");
  EXPECT_EQ(OwnWords(" ends here "), "0:ends 1:here ");
  EXPECT_EQ(OwnWords("one"), "0:one ");
  EXPECT_EQ(OwnWords(""), "");
  EXPECT_EQ(OwnWords(" .,;"), "");
}

TEST(IndexWordsTest, AreThoseOfSqliteForEveryByte) {
  for (int byte = 0; byte < 256; ++byte) {
    const std::string text = std::string("left") + static_cast<char>(byte) + "right 2";
    EXPECT_EQ(OwnWords(text), WordsOfSqlite(text)) << byte;
  }
}

TEST(IndexWordsTest, AreThoseOfSqliteForOtherTexts) {
  for (const char* const text :
       {"Plan And PLAN", "caf\u00e9 plan", "plan caf\u00e9", "\u65e5\u672c x", "\u0416\u0443\u043a",
        "\xff\xfe broken", "a\u0301b c\u0301", "\u0301x y-\u0301z", "x\u00e9_\u00e9y"}) {
    EXPECT_EQ(OwnWords(text), WordsOfSqlite(text)) << text;
  }
  EXPECT_EQ(OwnWords("caf\u00e9 Plan"), "0:cafe 1:plan ");
}

TEST(IndexWordsTest, MayBeLong) {
  const std::string text = std::string(40000, 'x') + " " + std::string(40000, 'y');
  EXPECT_EQ(OwnWords(text), WordsOfSqlite(text));
}

}  // namespace
}  // namespace tarn::archive
