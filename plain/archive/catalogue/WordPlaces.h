// WordPlaces.h - where in the words of an item FTS5 has found what it was asked for, and where that
// is in a text.
#ifndef TARN_ARCHIVE_WORDPLACES_H
#define TARN_ARCHIVE_WORDPLACES_H

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/catalogue/Database.h"
#include "archive/catalogue/Snippet.h"

struct Fts5Tokenizer;
struct fts5_api;

namespace tarn::archive {

// A phrase in a column of the index, counted in words.
struct WordPlace {
  int column = 0;
  size_t first = 0;
  size_t count = 0;
  size_t phrase = 0;
};

// What FTS5 has for functions and tokenizers of others.
fts5_api& FtsOf(const Database& database);

// Adds the function tarn_places(words) to a database: the phrases found in the present row, which
// PlacesOf() reads.
void AddPlacesFunction(const Database& database);
std::vector<WordPlace> PlacesOf(std::string_view answer);

// Takes texts apart as the index does.
class WordSplitter {
 public:
  explicit WordSplitter(const Database& database);
  WordSplitter(const WordSplitter&) = delete;
  WordSplitter& operator=(const WordSplitter&) = delete;
  ~WordSplitter();

  // The bytes of each word of prepared text, up to so many words.
  std::vector<TextSpan> wordsOf(std::string_view prepared, size_t most) const;

  // Each word as the index holds it.
  void forEachWord(std::string_view prepared,
                   const std::function<void(std::string_view word)>& take) const;

 private:
  void (*free_)(Fts5Tokenizer*) = nullptr;
  int (*split_)(Fts5Tokenizer*, void*, int, const char*, int,
                int (*)(void*, int, const char*, int, int, int)) = nullptr;
  Fts5Tokenizer* tokenizer_ = nullptr;
};

// The places of one text, whose words begin with number `firstWord` of its column, as bytes of the
// text; `words` gets how many words it has, as far as any place needs to know.
std::vector<FoundSpan> SpansIn(std::string_view text, const std::vector<WordPlace>& places,
                               size_t firstWord, const WordSplitter& splitter, size_t& words);

}  // namespace tarn::archive

#endif
