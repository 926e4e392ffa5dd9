// LittleEndian.h - the numbers of a compound file, which are little-endian. Callers see to it that
// the bytes are there.
#ifndef TARN_COMPOUND_LITTLEENDIAN_H
#define TARN_COMPOUND_LITTLEENDIAN_H

#include <cstdint>

namespace tarn {

inline uint64_t LoadU16(const unsigned char* at) {
  return static_cast<uint64_t>(at[0]) | static_cast<uint64_t>(at[1]) << 8;
}

inline uint64_t LoadU32(const unsigned char* at) { return LoadU16(at) | LoadU16(at + 2) << 16; }

inline void StoreU16(unsigned char* at, uint64_t value) {
  at[0] = static_cast<unsigned char>(value);
  at[1] = static_cast<unsigned char>(value >> 8);
}

inline void StoreU32(unsigned char* at, uint64_t value) {
  StoreU16(at, value);
  StoreU16(at + 2, value >> 16);
}

}  // namespace tarn

#endif
