#include "eml/MimeBoundary.h"

#include "Common/ByteSearch.h"

namespace tarn {
namespace {

constexpr std::string_view kBoundaryKey = "boundary=";

struct BoundaryValue {
  std::string_view text;
  size_t end;  // in the header
};

std::optional<BoundaryValue> FindBoundaryValue(std::string_view header) {
  const size_t key = FindIgnoringCase(header, kBoundaryKey);
  if (key == npos) return std::nullopt;
  size_t start = key + kBoundaryKey.size();
  size_t end = npos;
  if (header.substr(start).starts_with('"')) end = FindByte(header, '"', ++start);
  if (end == npos) end = FindLineEnd(header, start);
  return BoundaryValue{header.substr(start, end - start), end};
}

bool WriteDelimiter(std::string_view boundary, bool withCr, TrackedBuffer<char>& delimiter) {
  const std::string_view lead = withCr ? "\r\n--" : "\n--";
  delimiter.clear();
  if (delimiter.reserve(lead.size() + boundary.size() + 1) == nullptr) return false;
  if (!delimiter.append(lead).ok() || !delimiter.append(boundary).ok()) return false;
  delimiter.data()[delimiter.length()] = '\0';
  return true;
}

}  // namespace

Status FindBoundaryInHeader(const HeaderStretch& header, TrackedBuffer<char>& delimiter,
                            size_t& cursor) {
  const std::optional<BoundaryValue> value = FindBoundaryValue(header.text());
  if (!value) return StatusDone;

  const bool withCr = FindByte(header.text(), '\r', value->end) != npos;
  if (!WriteDelimiter(value->text, withCr, delimiter)) return StatusOutOfMemory;
  cursor = value->end + FindFoldedLineEnd(header.from(value->end)) + (withCr ? 2 : 1);
  return StatusOk;
}

Status FindMimeBoundary(std::string_view text, TrackedBuffer<char>& delimiter, size_t* cursor) {
  if (cursor == nullptr) return StatusNullArgument;
  return FindBoundaryInHeader({text, FindHeaderEnd(text)}, delimiter, *cursor);
}

}  // namespace tarn
