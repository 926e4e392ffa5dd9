// Answer.h - what one call of the filter gave its host, in a form that is the same in every build,
// process and place: addresses, temporary names and handles have no part in it.
#ifndef TARN_TESTS_SUPPORT_ROAD_ANSWER_H
#define TARN_TESTS_SUPPORT_ROAD_ANSWER_H

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "support/PatternedRecord.h"

namespace tarn::test {

struct Answer {
  std::string call;     // "info", "extract 2 to file"
  std::string outcome;  // the result as a number, or "throws " and what the exception says
  // All else: parts in the order of their coming, each a line with its name and size, its bytes as
  // they are, and a line end. Bytes that the filter left undefined stay so, for tools that see
  // them.
  std::string bytes;

  void add(std::string_view part, std::string_view content);
};

// The bytes of a record for an Answer. The eight bytes at each offset of `addresses` are told as
// "(same)", "(null)" or "(other)", compared with what remember() saw.
std::string BytesBut(std::string after, std::string_view before, std::span<const size_t> addresses);

template <typename Record>
std::string BytesBut(const PatternedRecord<Record>& record, std::span<const size_t> addresses) {
  return BytesBut(record.bytes(), record.remembered(), addresses);
}

// Any text that ends at a NUL, as UTF-8, or "(null)".
std::string TextOf(const char16_t* text);

}  // namespace tarn::test

#endif
