#include "archive/catalogue/AsciiWords.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace tarn::archive {
namespace {

enum class Tokenizer : uint8_t { Own, OfSqlite };

// Each word with its place, as an index of the catalogue's kind holds them.
std::string WordsIn(std::string_view text, Tokenizer tokenizer) {
  Database database(":memory:", DatabaseUse::Make);
  if (tokenizer == Tokenizer::Own) SplitAsciiSooner(database);
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

std::string OwnWords(std::string_view text) { return WordsIn(text, Tokenizer::Own); }

TEST(AsciiWordsTest, AreLettersAndDigits) {
  EXPECT_EQ(OwnWords("the plan_b, of 2024-05: a.b@c"),
            "0:the 1:plan 2:b 3:of 4:2024 5:05 6:a 7:b 8:c ");
  EXPECT_EQ(OwnWords(" ends here "), "0:ends 1:here ");
  EXPECT_EQ(OwnWords("one"), "0:one ");
  EXPECT_EQ(OwnWords(""), "");
  EXPECT_EQ(OwnWords(" .,;"), "");
}

TEST(AsciiWordsTest, AreThoseOfSqliteForEveryByte) {
  for (int byte = 0; byte < 256; ++byte) {
    const std::string text = std::string("left") + static_cast<char>(byte) + "right 2";
    EXPECT_EQ(OwnWords(text), WordsIn(text, Tokenizer::OfSqlite)) << byte;
  }
}

TEST(AsciiWordsTest, AreThoseOfSqliteForOtherTexts) {
  for (const char* const text : {"Plan And PLAN", "caf\u00e9 plan", "plan caf\u00e9",
                                 "\u65e5\u672c x", "\u0416\u0443\u043a", "\xff\xfe broken"}) {
    EXPECT_EQ(OwnWords(text), WordsIn(text, Tokenizer::OfSqlite)) << text;
  }
  EXPECT_EQ(OwnWords("caf\u00e9 Plan"), "0:cafe 1:plan ");
}

TEST(AsciiWordsTest, MayBeLong) {
  const std::string text = std::string(40000, 'x') + " " + std::string(40000, 'y');
  EXPECT_EQ(OwnWords(text), WordsIn(text, Tokenizer::OfSqlite));
}

}  // namespace
}  // namespace tarn::archive
