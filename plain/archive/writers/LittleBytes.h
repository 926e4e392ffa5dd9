// LittleBytes.h - numbers from bytes, least significant first, never beyond their end.
#ifndef TARN_ARCHIVE_LITTLEBYTES_H
#define TARN_ARCHIVE_LITTLEBYTES_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tarn::archive {

class LittleBytes {
 public:
  explicit LittleBytes(std::string_view bytes) : rest_(bytes) {}

  // 0, from the first number that is not whole on.
  uint16_t u16() { return static_cast<uint16_t>(number(2)); }
  uint32_t u32() { return static_cast<uint32_t>(number(4)); }
  int32_t i32() { return static_cast<int32_t>(u32()); }

  std::string_view take(size_t size) {
    if (size > rest_.size()) {
      isShort_ = true;
      rest_ = {};
      return {};
    }
    const std::string_view taken = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return taken;
  }

  // Whether more was asked for than there is.
  bool isShort() const { return isShort_; }
  size_t left() const { return rest_.size(); }

 private:
  uint64_t number(size_t size) {
    const std::string_view bytes = take(size);
    uint64_t value = 0;
    for (size_t at = bytes.size(); at-- != 0;) value = value << 8 | static_cast<uint8_t>(bytes[at]);
    return value;
  }

  std::string_view rest_;
  bool isShort_ = false;
};

}  // namespace tarn::archive

#endif
