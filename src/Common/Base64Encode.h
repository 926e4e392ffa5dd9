// Base64Encode.h - base64 (RFC 4648, section 4): the standard alphabet, padded, without line
// breaks.
#ifndef TARN_COMMON_BASE64ENCODE_H
#define TARN_COMMON_BASE64ENCODE_H

#include <cstdint>

namespace tarn {

// Encodes `size` bytes into `out`, with a NUL after them, and returns the length without that NUL.
// 0, with `out` untouched, when characters and NUL do not fit `room`.
uint64_t Base64Encode(char* out, uint64_t room, const char* bytes, uint64_t size);

}  // namespace tarn

#endif
