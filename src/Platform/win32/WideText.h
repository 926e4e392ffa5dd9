// WideText.h - UTF-16 text as the system's calls take it: there both unit types have 16 bits.
#ifndef TARN_PLATFORM_WIN32_WIDE_TEXT_H
#define TARN_PLATFORM_WIN32_WIDE_TEXT_H

#include <string_view>

namespace tarn::platform {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

inline const wchar_t* AsWide(const char16_t* text) noexcept {
  return reinterpret_cast<const wchar_t*>(text);
}
inline wchar_t* AsWide(char16_t* text) noexcept { return reinterpret_cast<wchar_t*>(text); }

inline std::u16string_view AsUtf16(std::wstring_view text) noexcept {
  return {reinterpret_cast<const char16_t*>(text.data()), text.size()};
}

// Whether half of a surrogate pair stands without the other.
constexpr bool HoldsLoneSurrogate(std::u16string_view text) noexcept {
  for (size_t at = 0; at < text.size(); ++at) {
    if ((text[at] & 0xF800) != 0xD800) continue;
    const bool isPair =
        (text[at] & 0xFC00) == 0xD800 && at + 1 < text.size() && (text[at + 1] & 0xFC00) == 0xDC00;
    if (!isPair) return true;
    ++at;
  }
  return false;
}

}  // namespace tarn::platform

#endif  // TARN_PLATFORM_WIN32_WIDE_TEXT_H
