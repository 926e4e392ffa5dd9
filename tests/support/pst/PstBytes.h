// PstBytes.h - little-endian numbers and UTF-16 text in byte strings.
//
// Reading or writing after the end of a string throws std::out_of_range.
#ifndef TARN_TESTS_SUPPORT_PST_PSTBYTES_H
#define TARN_TESTS_SUPPORT_PST_PSTBYTES_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tarn::test {

inline void PutLe(std::string& bytes, size_t offset, uint64_t value, size_t width) {
  for (size_t i = 0; i < width; ++i) {
    bytes.at(offset + i) = static_cast<char>(i < 8 ? (value >> (8 * i)) & 0xFF : 0);
  }
}

inline void AppendLe(std::string& bytes, uint64_t value, size_t width) {
  bytes.resize(bytes.size() + width);
  PutLe(bytes, bytes.size() - width, value, width);
}

inline uint64_t GetLe(std::string_view bytes, size_t offset, size_t width) {
  uint64_t value = 0;
  for (size_t i = 0; i < width; ++i) {
    value |= uint64_t{static_cast<uint8_t>(bytes.at(offset + i))} << (8 * i);
  }
  return value;
}

inline std::string LeBytes(uint64_t value, size_t width) {
  std::string bytes;
  AppendLe(bytes, value, width);
  return bytes;
}

// UTF-16LE without a terminator.
inline std::string Utf16Bytes(std::u16string_view text) {
  std::string bytes;
  for (char16_t unit : text) AppendLe(bytes, unit, 2);
  return bytes;
}

// Bytes in which no two near places look alike, nor the same places of two pages.
inline std::string Pattern(size_t size, size_t seed = 0) {
  std::string bytes(size, '\0');
  for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>((i * 7 + i / 251 + seed) & 0xFF);
  return bytes;
}

// The bytes of a text, to be filled or to be read.
inline std::span<unsigned char> RoomOf(std::string& text) {
  return {reinterpret_cast<unsigned char*>(text.data()), text.size()};
}
inline std::span<const unsigned char> BytesOf(std::string_view text) {
  return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

// Replaces the bytes from offset on; the string never grows.
inline void PutBytes(std::string& bytes, size_t offset, std::string_view value) {
  if (offset > bytes.size() || value.size() > bytes.size() - offset) {
    throw std::out_of_range("PutBytes");
  }
  bytes.replace(offset, value.size(), value);
}

}  // namespace tarn::test

#endif
