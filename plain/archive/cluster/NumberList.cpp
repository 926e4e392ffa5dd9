#include "archive/cluster/NumberList.h"

#include <charconv>

namespace tarn::archive {

std::string NumberList(const NumberSpans& spans) {
  std::string list;
  for (const NumberSpan& span : spans) {
    if (!list.empty()) list += ',';
    list += std::to_string(span.first);
    if (span.last != span.first) list += "-" + std::to_string(span.last);
  }
  return list;
}

std::string NumberList(const std::vector<uint64_t>& numbers) {
  NumberSpans spans;
  for (const uint64_t number : numbers) AddNumber(spans, number);
  return NumberList(spans);
}

NumberSpans SpansOf(std::string_view list, uint64_t largest) {
  NumberSpans spans;
  const char* at = list.data();
  const char* const end = at + list.size();
  while (at != end) {
    NumberSpan span;
    auto read = std::from_chars(at, end, span.first);
    if (read.ec != std::errc()) break;
    span.last = span.first;
    if (read.ptr != end && *read.ptr == '-') {
      read = std::from_chars(read.ptr + 1, end, span.last);
      if (read.ec != std::errc() || span.last < span.first) break;
    }
    if (span.last > largest || (!spans.empty() && span.first <= spans.back().last)) break;
    spans.push_back(span);
    at = read.ptr;
    if (at == end || *at != ',') break;
    ++at;
  }
  return spans;
}

}  // namespace tarn::archive
