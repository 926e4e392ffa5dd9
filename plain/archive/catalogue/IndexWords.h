// IndexWords.h - prepared texts taken apart into the words of the index.
#ifndef TARN_ARCHIVE_INDEXWORDS_H
#define TARN_ARCHIVE_INDEXWORDS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "archive/catalogue/Database.h"
#include "archive/catalogue/WordPlaces.h"

namespace tarn::archive {

// The words that SQLite's own tokenizer finds, found sooner where they are ASCII. One thread at a
// time.
class IndexWords {
 public:
  IndexWords();

  // Calls take(std::string_view) for each. What ASCII signs between words enclose is taken apart by
  // itself, whatever is around it.
  template <typename Take>
  void split(std::string_view prepared, const Take& take) const {
    const char* at = prepared.data();
    const char* const end = at + prepared.size();
    while (at != end) {
      const char* const begin = at;
      while (at != end && signOf(*at) == Sign::OfWord) ++at;
      const bool isWord = at == end || signOf(*at) == Sign::Between;
      if (!isWord) {
        while (at != end && signOf(*at) != Sign::Between) ++at;
      }
      const std::string_view part(begin, static_cast<size_t>(at - begin));
      if (!isWord) {
        splitter_.forEachWord(part, take);
      } else if (!part.empty()) {
        take(part);
      }
      while (at != end && signOf(*at) == Sign::Between) ++at;
    }
  }

 private:
  enum class Sign : uint8_t { Between, OfWord, Other };
  static consteval std::array<Sign, 256> makeSigns();
  static const std::array<Sign, 256> kSigns;
  static Sign signOf(char letter) { return kSigns[static_cast<unsigned char>(letter)]; }

  Database database_;
  WordSplitter splitter_;
};

}  // namespace tarn::archive

#endif
