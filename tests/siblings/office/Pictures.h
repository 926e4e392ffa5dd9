// Pictures.h - pictures as RTF holds them: in hexadecimal digits.
#ifndef TARN_TESTS_SIBLINGS_OFFICE_PICTURES_H
#define TARN_TESTS_SIBLINGS_OFFICE_PICTURES_H

#include <cstdint>
#include <string>
#include <string_view>

namespace tarn::test {

// A PNG of 4 by 4 pixels of the colour FF0080.
inline constexpr std::string_view kPinkPng =
    "89504e470d0a1a0a0000000d494844520000000400000004080200000026930929000000104944415478da63f8cfd0"
    "00470cc4710076a217f1d2face520000000049454e44ae426082";

// A PNG that says that it has 100,000 by 100,000 pixels, and ends after the first few.
inline constexpr std::string_view kHugePng =
    "89504e470d0a1a0a0000000d49484452000186a0000186a0080200000027309c9f000000114944415478da63601805"
    "a360140c77000003e80001ce494c580000000049454e44ae426082";

// A Windows metafile: an extent of 100 by 100, and a rectangle over all of it, filled with 008000.
inline constexpr std::string_view kGreenMetafile =
    "010009000003280000000100070000000000050000000b0200000000050000000c026400640007000000fc02000000"
    "8000000000040000002d010000070000001b046400640000000000030000000000";

inline std::string BytesOfHex(std::string_view digits) {
  std::string bytes;
  for (size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(std::string(digits.substr(i, 2)), nullptr, 16));
  }
  return bytes;
}

}  // namespace tarn::test

#endif
