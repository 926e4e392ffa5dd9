// LittleEndian.h - numbers out of and into bytes, least significant byte first, whatever the
// machine.
#ifndef TARN_COMMON_LITTLEENDIAN_H
#define TARN_COMMON_LITTLEENDIAN_H

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace tarn {

// The unsigned number at `bytes`, of which the caller has seen that sizeof(T) can be read.
// Compilers make one load of it.
template <typename T>
constexpr T LoadLittleEndian(const unsigned char* bytes) {
  static_assert(std::is_unsigned_v<T>);
  T value = 0;
  for (size_t i = 0; i < sizeof(T); ++i) {
    value = static_cast<T>(value | static_cast<T>(static_cast<T>(bytes[i]) << (8 * i)));
  }
  return value;
}

// Puts the lowest sizeof(T) bytes of the number to `bytes`, where there is room for them.
template <typename T>
constexpr void StoreLittleEndian(unsigned char* bytes, uint64_t value) {
  static_assert(std::is_unsigned_v<T>);
  for (size_t i = 0; i < sizeof(T); ++i) bytes[i] = static_cast<unsigned char>(value >> (8 * i));
}

}  // namespace tarn

#endif
