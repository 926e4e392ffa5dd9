#include "archive/catalogue/IndexWords.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tarn::archive {
namespace {

enum class Sign : uint8_t { Between, OfWord, Other };

constexpr std::array<Sign, 256> SignTable() {
  std::array<Sign, 256> signs{};
  for (size_t byte = 0; byte < signs.size(); ++byte) {
    const bool isOfWord = (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z');
    const bool isOther = byte == 0 || (byte >= 'A' && byte <= 'Z') || byte >= 0x80;
    signs[byte] = isOfWord ? Sign::OfWord : isOther ? Sign::Other : Sign::Between;
  }
  return signs;
}

constexpr std::array<Sign, 256> kSigns = SignTable();

Sign SignOf(char letter) { return kSigns[static_cast<unsigned char>(letter)]; }

}  // namespace

IndexWords::IndexWords() : database_(":memory:", DatabaseUse::Make), splitter_(database_) {}

// What ASCII signs between words enclose is taken apart by itself, whatever is around it.
void IndexWords::split(std::string_view prepared, const Take& take) const {
  const char* at = prepared.data();
  const char* const end = at + prepared.size();
  while (at != end) {
    const char* const begin = at;
    while (at != end && SignOf(*at) == Sign::OfWord) ++at;
    const bool isWord = at == end || SignOf(*at) == Sign::Between;
    if (!isWord) {
      while (at != end && SignOf(*at) != Sign::Between) ++at;
    }
    const std::string_view part(begin, static_cast<size_t>(at - begin));
    if (!isWord) {
      splitter_.forEachWord(part, take);
    } else if (!part.empty()) {
      take(part);
    }
    while (at != end && SignOf(*at) == Sign::Between) ++at;
  }
}

}  // namespace tarn::archive
