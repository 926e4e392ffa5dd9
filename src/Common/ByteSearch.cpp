// The search: two bytes of the needle, its anchors, are chosen for being rare in mail files, and
// whole rows of places are asked at once for matches of both anchors (SearchBlocks.h). A first
// letter alone would be met every 32 bytes in base64 text, and the CR of a delimiter on every line;
// a pair such as "-" and ":" of "Content-Type:" is hardly ever met by chance, so the search costs
// little more than reading the stretch once. Only a candidate, where both match, is compared.
//
// A stretch may be made so that every place is a candidate and every compare fails late. The bytes
// spent on failed compares are therefore counted, and once they outweigh the bytes advanced, the
// rest of the stretch goes to a search that is linear whatever the bytes are (TwoWaySearch.h).
#include "Common/ByteSearch.h"

#include "Common/PairSearch.h"

namespace tarn {
namespace {

template <typename Fold>
size_t Find(std::string_view text, std::string_view needle, size_t from) {
#if defined(__SSE2__)
  return search::FindByPair<search::VectorBlock, Fold>(text, needle, from);
#else
  return search::FindByPair<search::WordBlock, Fold>(text, needle, from);
#endif
}

}  // namespace

size_t FindBytes(std::string_view text, std::string_view needle, size_t from) {
  if (needle.size() == 1) return FindByte(text, needle.front(), from);
  return Find<search::ExactBytes>(text, needle, from);
}

size_t FindIgnoringCase(std::string_view text, std::string_view needle, size_t from) {
  return Find<search::FoldedBytes>(text, needle, from);
}

size_t FindByte(std::string_view text, char byte, size_t from) { return text.find(byte, from); }

bool StartsWithIgnoringCase(std::string_view text, std::string_view prefix) {
  return EqualsIgnoringCase(text.substr(0, prefix.size()), prefix);
}

bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (search::FoldedBytes::Of(a[i]) != search::FoldedBytes::Of(b[i])) return false;
  }
  return true;
}

}  // namespace tarn
