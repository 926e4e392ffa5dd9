#include "archive/catalogue/IndexWords.h"

namespace tarn::archive {

consteval std::array<IndexWords::Sign, 256> IndexWords::makeSigns() {
  std::array<Sign, 256> signs{};
  for (size_t byte = 0; byte < signs.size(); ++byte) {
    const bool isOfWord = (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z');
    const bool isOther = byte == 0 || (byte >= 'A' && byte <= 'Z') || byte >= 0x80;
    signs[byte] = isOfWord ? Sign::OfWord : isOther ? Sign::Other : Sign::Between;
  }
  return signs;
}

constexpr std::array<IndexWords::Sign, 256> IndexWords::kSigns = makeSigns();

IndexWords::IndexWords() : database_(":memory:", DatabaseUse::Make), splitter_(database_) {}

}  // namespace tarn::archive
