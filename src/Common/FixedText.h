// FixedText.h - a short text in a room of its own, which never takes memory and never grows.
#ifndef TARN_COMMON_FIXEDTEXT_H
#define TARN_COMMON_FIXEDTEXT_H

#include <charconv>
#include <cstdint>
#include <string_view>

namespace tarn {

// At most `kMost` bytes; the NUL after them has a place of its own.
template <size_t kMost>
class FixedText {
 public:
  // False for a piece that does not fit, and then the text is as it was.
  bool append(std::string_view piece) {
    if (piece.size() > kMost - length_) return false;
    length_ += piece.copy(bytes_ + length_, piece.size());
    bytes_[length_] = '\0';
    return true;
  }

  // The number in decimal digits.
  bool append(uint64_t number) {
    char digits[20];
    const char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    return append(std::string_view(digits, end));
  }

  std::string_view view() const { return {bytes_, length_}; }
  // The same, with a NUL after it.
  const char* c_str() const { return bytes_; }

 private:
  char bytes_[kMost + 1] = {};
  size_t length_ = 0;
};

}  // namespace tarn

#endif
