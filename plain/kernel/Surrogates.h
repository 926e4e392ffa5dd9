// Surrogates.h - the arithmetic of UTF-16 pairs.
#ifndef TARN_KERNEL_SURROGATES_H
#define TARN_KERNEL_SURROGATES_H

namespace tarn::kernel {

constexpr bool IsSurrogate(char16_t unit) { return (unit & 0xF800) == 0xD800; }
constexpr bool IsHighSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
constexpr bool IsLowSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

constexpr char32_t JoinSurrogates(char16_t high, char16_t low) {
  return 0x10000 + ((static_cast<char32_t>(high) & 0x3FF) << 10 | (low & 0x3FF));
}
constexpr char16_t HighSurrogateOf(char32_t point) {
  return static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10));
}
constexpr char16_t LowSurrogateOf(char32_t point) {
  return static_cast<char16_t>(0xDC00 + ((point - 0x10000) & 0x3FF));
}

}  // namespace tarn::kernel

#endif
