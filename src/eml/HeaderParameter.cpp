#include "eml/HeaderParameter.h"

#include <algorithm>

#include "Common/ByteSearch.h"
#include "eml/HeaderSearch.h"

namespace tarn {
namespace {

// Does this byte, in front of a key, make it the tail of a longer name?
bool ContinuesName(char byte) {
  return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') ||
         (byte >= '0' && byte <= '9') || byte == '-' || byte == '_';
}

// Behind the first occurrence of the key that is a name of its own, or null.
const char* FindBehindKey(const char* start, const char* end, std::string_view key) {
  // At least one byte stands behind a key that counts.
  const char* const last = start < end ? end - 1 : end;
  const char* from = start;
  while (const char* const hit = FindIgnoringCase(from, last, key)) {
    from = hit + key.size();
    if (hit == start || !ContinuesName(hit[-1])) return from;
  }
  return nullptr;
}

}  // namespace

const char* FindHeaderParameter(const char* start, const char* end, std::string_view key,
                                const char** valueEnd) {
  const char* value = FindBehindKey(start, end, key);
  if (value == nullptr) return nullptr;
  while (value != end && *value == ' ') ++value;

  const bool quoted = value != end && *value == '"';
  if (quoted) ++value;
  const char* const lineEnd = FindLineEnd(value, end);
  if (quoted) {
    if (const char* const quote = FindByte(value, lineEnd, '"')) {
      *valueEnd = quote;
      return value;
    }
  }
  *valueEnd = std::find_if(value, lineEnd, [](char byte) { return byte == ';' || byte == '"'; });
  return value;
}

}  // namespace tarn
