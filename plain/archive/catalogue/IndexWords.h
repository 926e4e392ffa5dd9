// IndexWords.h - prepared texts taken apart into the words of the index.
#ifndef TARN_ARCHIVE_INDEXWORDS_H
#define TARN_ARCHIVE_INDEXWORDS_H

#include <functional>
#include <string_view>

#include "archive/catalogue/Database.h"
#include "archive/catalogue/WordPlaces.h"

namespace tarn::archive {

// The words that SQLite's own tokenizer finds, found sooner where they are ASCII. One thread at a
// time.
class IndexWords {
 public:
  using Take = std::function<void(std::string_view word)>;

  IndexWords();

  void split(std::string_view prepared, const Take& take) const;

 private:
  Database database_;
  WordSplitter splitter_;
};

}  // namespace tarn::archive

#endif
