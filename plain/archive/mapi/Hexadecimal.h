// Hexadecimal.h - numbers as the names of streams and messages to people have them.
#ifndef TARN_ARCHIVE_HEXADECIMAL_H
#define TARN_ARCHIVE_HEXADECIMAL_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tarn::archive::mapi {

// The lowest `digits` digits, upper case.
inline std::string Hexadecimal(uint32_t number, size_t digits) {
  std::string text(digits, '0');
  for (size_t at = digits; at-- != 0; number >>= 4) text[at] = "0123456789ABCDEF"[number & 0xF];
  return text;
}

// Two digits a byte.
inline std::string HexadecimalOf(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) text += Hexadecimal(static_cast<unsigned char>(byte), 2);
  return text;
}

}  // namespace tarn::archive::mapi

#endif
