#include "eml/MimeBoundary.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "Common/ByteSearch.h"
#include "eml/HeaderSearch.h"
#include "eml/HeaderValue.h"

namespace tarn {
namespace {

constexpr std::string_view kBoundaryKey = "boundary=";

// The boundary's text in [start, headerEnd), or false.
bool FindBoundaryValue(const char* start, const char* headerEnd, const char*& value,
                       const char*& valueEnd) {
  const char* const key = FindIgnoringCase(start, headerEnd, kBoundaryKey);
  if (key == nullptr) return false;
  value = key + kBoundaryKey.size();
  if (value != headerEnd && *value == '"') {
    ++value;
    valueEnd = FindByte(value, headerEnd, '"');
    if (valueEnd != nullptr) return true;
  }
  valueEnd = std::find_if(value, headerEnd, [](char byte) { return byte == '\r' || byte == '\n'; });
  return true;
}

bool WriteDelimiter(std::string_view boundary, bool withCr, TrackedBuffer<char>& delimiter) {
  const std::string_view lead = withCr ? "\r\n--" : "\n--";
  delimiter.setLength(0);
  if (delimiter.reserve(lead.size() + boundary.size() + 1) == nullptr) return false;
  std::memcpy(delimiter.data(), lead.data(), lead.size());
  if (!boundary.empty()) {
    std::memcpy(delimiter.data() + lead.size(), boundary.data(), boundary.size());
  }
  delimiter.setLength(lead.size() + boundary.size());
  delimiter.data()[delimiter.length()] = '\0';
  return true;
}

}  // namespace

int32_t FindBoundaryInHeader(const char* start, const char* headerEnd, const char* readableEnd,
                             TrackedBuffer<char>& delimiter, const char** cursor) {
  if (cursor == nullptr) return StatusNullArgument;
  const char* value = nullptr;
  const char* valueEnd = nullptr;
  if (!FindBoundaryValue(start, headerEnd, value, valueEnd)) return StatusDone;

  const bool withCr = FindByte(valueEnd, headerEnd, '\r') != nullptr;
  const std::string_view boundary(value, static_cast<size_t>(valueEnd - value));
  if (!WriteDelimiter(boundary, withCr, delimiter)) return StatusOutOfMemory;

  const char* const lineEnd = FindValueEnd(valueEnd, headerEnd, readableEnd);
  *cursor = (lineEnd != nullptr ? lineEnd : headerEnd) + (withCr ? 2 : 1);
  return StatusOk;
}

int32_t FindMimeBoundary(const char* start, const char* end, TrackedBuffer<char>& delimiter,
                         const char** cursor) {
  return FindBoundaryInHeader(start, FindHeaderEnd(start, end), end, delimiter, cursor);
}

}  // namespace tarn
