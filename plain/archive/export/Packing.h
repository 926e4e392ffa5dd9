// Packing.h - numbers and texts as bytes between processes of one program.
#ifndef TARN_ARCHIVE_PACKING_H
#define TARN_ARCHIVE_PACKING_H

#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace tarn::archive {

class Packer {
 public:
  template <typename Number>
  requires std::is_integral_v<Number> Packer& put(Number number) {
    const auto wide = static_cast<uint64_t>(number);
    bytes_.append(reinterpret_cast<const char*>(&wide), sizeof wide);
    return *this;
  }
  Packer& put(std::string_view text) {
    put(text.size());
    bytes_ += text;
    return *this;
  }
  Packer& put(const std::string& text) { return put(std::string_view(text)); }
  Packer& put(const char* text) { return put(std::string_view(text)); }
  Packer& put(const std::optional<std::string>& text) {
    return put(text.has_value()).put(text ? std::string_view(*text) : std::string_view());
  }

  std::string& bytes() { return bytes_; }

 private:
  std::string bytes_;
};

// In the same order. Beyond the end there are zeros and empty texts.
class Unpacker {
 public:
  explicit Unpacker(std::string_view bytes) : bytes_(bytes) {}

  bool isAtEnd() const { return bytes_.empty(); }

  uint64_t number() {
    uint64_t value = 0;
    const std::string_view part = take(sizeof value);
    if (part.size() == sizeof value) std::memcpy(&value, part.data(), sizeof value);
    return value;
  }
  bool flag() { return number() != 0; }
  std::string text() { return std::string(take(number())); }
  std::optional<std::string> optionalText() {
    const bool isThere = flag();
    std::string value = text();
    if (!isThere) return std::nullopt;
    return value;
  }

 private:
  std::string_view take(uint64_t count) {
    const std::string_view part = bytes_.substr(0, static_cast<size_t>(count));
    bytes_.remove_prefix(part.size());
    return part;
  }
  std::string_view bytes_;
};

}  // namespace tarn::archive

#endif
