// Utf8CodePage.h - code page 65001, converted here on every platform: how many U+FFFD a malformed
// sequence gives differs between versions of Windows.
//
// The two conversions of CodePages.h for UTF-8, with the same results. The caller has checked the
// arguments.
#ifndef TARN_PLATFORM_UTF8_CODE_PAGE_H
#define TARN_PLATFORM_UTF8_CODE_PAGE_H

#include <cstddef>
#include <span>
#include <string_view>

#include "Platform/CodePages.h"

namespace tarn::platform {

// Each maximal malformed part gives U+FFFD.
size_t Utf8ToUtf16(std::string_view source, std::span<char16_t> destination) noexcept;

// Lone surrogates give EF BF BD, the default.
EncodedBytes Utf16ToUtf8(std::u16string_view source, std::span<char> destination) noexcept;

}  // namespace tarn::platform

#endif  // TARN_PLATFORM_UTF8_CODE_PAGE_H
