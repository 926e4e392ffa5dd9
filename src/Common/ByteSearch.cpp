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

#include <cstring>

#include "Common/PairSearch.h"

namespace tarn {
namespace {

template <typename Fold>
const char* Find(const char* start, const char* end, std::string_view needle) {
#if defined(__SSE2__)
  return search::FindByPair<search::VectorBlock, Fold>(start, end, needle);
#else
  return search::FindByPair<search::WordBlock, Fold>(start, end, needle);
#endif
}

}  // namespace

const char* FindBytes(const char* start, const char* end, std::string_view needle) {
  if (needle.size() == 1) return FindByte(start, end, needle.front());
  return Find<search::ExactBytes>(start, end, needle);
}

const char* FindIgnoringCase(const char* start, const char* end, std::string_view needle) {
  return Find<search::FoldedBytes>(start, end, needle);
}

const char* FindByte(const char* start, const char* end, char byte) {
  if (start == end) return nullptr;
  return static_cast<const char*>(
      std::memchr(start, static_cast<unsigned char>(byte), static_cast<size_t>(end - start)));
}

bool StartsWith(const char* start, const char* end, std::string_view prefix) {
  const std::string_view text(start, static_cast<size_t>(end - start));
  return text.starts_with(prefix);
}

bool StartsWithIgnoringCase(const char* start, const char* end, std::string_view prefix) {
  const std::string_view text(start, static_cast<size_t>(end - start));
  return EqualsIgnoringCase(text.substr(0, prefix.size()), prefix);
}

bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (search::FoldedBytes::Of(a[i]) != search::FoldedBytes::Of(b[i])) return false;
  }
  return true;
}

namespace {

size_t Position(std::string_view text, const char* found) {
  return found != nullptr ? static_cast<size_t>(found - text.data()) : std::string_view::npos;
}

}  // namespace

size_t FindBytes(std::string_view text, std::string_view needle, size_t from) {
  if (from > text.size()) return std::string_view::npos;
  return Position(text, FindBytes(text.data() + from, text.data() + text.size(), needle));
}

size_t FindIgnoringCase(std::string_view text, std::string_view needle, size_t from) {
  if (from > text.size()) return std::string_view::npos;
  return Position(text, FindIgnoringCase(text.data() + from, text.data() + text.size(), needle));
}

size_t FindByte(std::string_view text, char byte, size_t from) {
  if (from > text.size()) return std::string_view::npos;
  return Position(text, FindByte(text.data() + from, text.data() + text.size(), byte));
}

bool StartsWithIgnoringCase(std::string_view text, std::string_view prefix) {
  return EqualsIgnoringCase(text.substr(0, prefix.size()), prefix);
}

}  // namespace tarn
