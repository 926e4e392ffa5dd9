// HostileText.h - texts that many shapes are made of.
#ifndef TARN_TESTS_SUPPORT_HOSTILE_HOSTILETEXT_H
#define TARN_TESTS_SUPPORT_HOSTILE_HOSTILETEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace tarn::test {

// The piece so many times.
inline std::string Times(size_t count, std::string_view piece) {
  std::string text;
  text.reserve(count * piece.size());
  for (size_t i = 0; i < count; ++i) text += piece;
  return text;
}

// What each number from 0 on gives.
template <typename Make>
std::string Each(size_t count, const Make& make) {
  std::string text;
  for (size_t i = 0; i < count; ++i) text += make(std::to_string(i));
  return text;
}

// ASCII as UTF-16.
inline std::u16string Utf16Text(std::string_view text) { return {text.begin(), text.end()}; }

inline std::u16string Wide(size_t number) { return Utf16Text(std::to_string(number)); }

}  // namespace tarn::test

#endif
