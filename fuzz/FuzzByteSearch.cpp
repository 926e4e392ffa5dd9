// Searches for any needle in any text: what ByteSearch.h and TextIndex.h find is what comparing at
// every place finds, and nothing outside the text is read.
//
// Input: how often the text is repeated, 1 to 64 times; the length of the needle; then needle and
// text. Many repetitions bring in the searches that take over when candidates keep failing.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "Common/ByteSearch.h"
#include "Common/TextIndex.h"

namespace {

constexpr size_t kNone = std::string_view::npos;

void Require(bool holds, const char* otherwise) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", otherwise);
  std::abort();
}

// A block of exactly this size, so that reading beyond it is seen.
class Text {
 public:
  explicit Text(std::string_view bytes) : size_(bytes.size()), block_(new char[bytes.size()]) {
    bytes.copy(block_.get(), size_);
  }

  std::string_view bytes() const { return {block_.get(), size_}; }

 private:
  size_t size_;
  std::unique_ptr<char[]> block_;
};

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

size_t Find(std::string_view text, std::string_view needle) {
  return needle.empty() ? kNone : text.find(needle);
}

void SearchOnce(const Text& text, std::string_view needle) {
  Require(tarn::FindBytes(text.bytes(), needle) == Find(text.bytes(), needle),
          "another place than the first");
  Require(tarn::FindIgnoringCase(text.bytes(), needle) == Find(Lower(text.bytes()), Lower(needle)),
          "another place than the first but for case");
  if (needle.empty()) return;
  Require(tarn::FindByte(text.bytes(), needle[0]) == text.bytes().find(needle[0]),
          "another place of a byte");
}

// Every occurrence, overlapping ones too, at first by reading and then by the hashed windows.
void SearchOften(const Text& text, std::string_view needle) {
  constexpr int kSearches = 4;
  constexpr int kMostOccurrences = 1000;
  tarn::TextIndex index(text.bytes(), {uint64_t{1} << 24, 1});
  for (int search = 0; search < kSearches; ++search) {
    tarn::Occurrences occurrences(index, needle);
    size_t from = 0;
    for (int i = 0; i < kMostOccurrences; ++i) {
      const uint64_t place = occurrences.next(from);
      const size_t expected = from > text.bytes().size() ? kNone : text.bytes().find(needle, from);
      Require(place == (expected == kNone ? tarn::kNoPlace : expected),
              "another place than the next");
      if (expected == kNone) break;
      from = expected + 1;
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  const size_t times = 1 + data[0] % 64;
  std::string_view rest(reinterpret_cast<const char*>(data) + 2, size - 2);
  const Text needle(rest.substr(0, data[1]));
  rest.remove_prefix(needle.bytes().size());
  std::string repeated;
  for (size_t i = 0; i < times && repeated.size() < 200000; ++i) repeated += rest;
  const Text text(repeated);
  SearchOnce(text, needle.bytes());
  if (!needle.bytes().empty()) SearchOften(text, needle.bytes());
  return 0;
}
