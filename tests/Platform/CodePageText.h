// CodePageText.h - the conversions under test on strings, and what the tests expect of sizes.
#ifndef TARN_TESTS_PLATFORM_CODE_PAGE_TEXT_H
#define TARN_TESTS_PLATFORM_CODE_PAGE_TEXT_H

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

#include "Platform/CodePages.h"

namespace tarn::platform {

// A literal with its embedded NULs.
template <size_t N>
std::string Bytes(const char (&literal)[N]) {
  return std::string(literal, N - 1);
}
template <size_t N>
std::u16string Units(const char16_t (&literal)[N]) {
  return std::u16string(literal, N - 1);
}

inline std::string OneByte(int value) { return std::string(1, static_cast<char>(value)); }

inline std::u16string Decode(uint32_t codePage, std::string_view source) {
  std::u16string text(source.size() + 1, u'#');
  text.resize(BytesToUtf16(codePage, source, text));
  return text;
}

struct Encoded {
  std::string bytes;
  bool usedDefault;

  bool operator==(const Encoded&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const Encoded& encoded) {
    return out << testing::PrintToString(encoded.bytes)
               << (encoded.usedDefault ? " with a default" : "");
  }
};

inline Encoded Encode(uint32_t codePage, std::u16string_view source) {
  std::string bytes(source.size() * 5 + 1, '#');
  const EncodedBytes encoded = Utf16ToBytes(codePage, source, bytes);
  bytes.resize(encoded.size);
  return {bytes, encoded.usedDefault};
}

}  // namespace tarn::platform

#endif  // TARN_TESTS_PLATFORM_CODE_PAGE_TEXT_H
