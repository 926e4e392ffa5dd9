// IndexNumber.h - numbers as an index of FTS5 stores them: seven bits a byte, the highest first.
#ifndef TARN_ARCHIVE_INDEXNUMBER_H
#define TARN_ARCHIVE_INDEXNUMBER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tarn::archive {

// Below 2^56, which every number of an index is.
inline constexpr size_t kLongestIndexNumber = 8;

inline void AppendIndexNumber(std::string& bytes, uint64_t number) {
  if (number < 0x80) {
    bytes += static_cast<char>(number);
    return;
  }
  char digits[kLongestIndexNumber];
  size_t at = kLongestIndexNumber;
  digits[--at] = static_cast<char>(number & 0x7F);
  while ((number >>= 7) != 0) digits[--at] = static_cast<char>((number & 0x7F) | 0x80);
  bytes.append(digits + at, kLongestIndexNumber - at);
}

// The number that begins at the place, which goes after it. The bytes are an index's own.
inline uint64_t ReadIndexNumber(const char*& at) {
  uint64_t number = 0;
  for (;;) {
    const auto byte = static_cast<unsigned char>(*at++);
    number = number << 7 | (byte & 0x7F);
    if (byte < 0x80) return number;
  }
}

// The sum of numbers, whatever the bytes are.
inline uint64_t SumOfIndexNumbers(std::string_view bytes) {
  uint64_t sum = 0;
  uint64_t number = 0;
  for (const char byte : bytes) {
    number = number << 7 | (static_cast<unsigned char>(byte) & 0x7F);
    if (static_cast<unsigned char>(byte) >= 0x80) continue;
    sum += number;
    number = 0;
  }
  return sum;
}

}  // namespace tarn::archive

#endif
