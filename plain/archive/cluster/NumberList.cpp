#include "archive/cluster/NumberList.h"

#include <charconv>

namespace tarn::archive {

std::string NumberList(const std::vector<uint64_t>& numbers) {
  std::string list;
  for (size_t at = 0; at < numbers.size();) {
    size_t end = at + 1;
    while (end < numbers.size() && numbers[end] == numbers[end - 1] + 1) ++end;
    if (!list.empty()) list += ',';
    list += std::to_string(numbers[at]);
    if (end - at > 1) list += "-" + std::to_string(numbers[end - 1]);
    at = end;
  }
  return list;
}

std::vector<uint64_t> NumbersOf(std::string_view list, uint64_t largest) {
  std::vector<uint64_t> numbers;
  const char* at = list.data();
  const char* const end = at + list.size();
  while (at != end) {
    uint64_t first = 0;
    auto read = std::from_chars(at, end, first);
    if (read.ec != std::errc()) break;
    uint64_t last = first;
    if (read.ptr != end && *read.ptr == '-') {
      read = std::from_chars(read.ptr + 1, end, last);
      if (read.ec != std::errc() || last < first) break;
    }
    // Rising, so that the list is never longer than its largest number.
    if (last > largest || (!numbers.empty() && first <= numbers.back())) break;
    for (uint64_t number = first; number != last; ++number) numbers.push_back(number);
    numbers.push_back(last);
    at = read.ptr;
    if (at == end || *at != ',') break;
    ++at;
  }
  return numbers;
}

}  // namespace tarn::archive
