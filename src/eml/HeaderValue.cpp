#include "eml/HeaderValue.h"

#include "eml/HeaderSearch.h"

namespace tarn {

const char* FindValueEnd(const char* value, const char* headerEnd, const char* readableEnd) {
  const char* const lineEnd = FindFoldedLineEnd(value, headerEnd);
  if (lineEnd == nullptr || headerEnd - lineEnd > 2) return lineEnd;
  // The last line end of the header: the byte two places on is the first or second of the content.
  if (readableEnd - lineEnd <= 2) return lineEnd;
  return lineEnd[2] == ' ' || lineEnd[2] == '\t' ? nullptr : lineEnd;
}

}  // namespace tarn
