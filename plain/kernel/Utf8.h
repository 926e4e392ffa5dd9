// Utf8.h - conversions of whole texts between UTF-16 and UTF-8.
#ifndef TARN_KERNEL_UTF8_H
#define TARN_KERNEL_UTF8_H

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace tarn::kernel {

// The two conversions as KernelWideToUtf8 and KernelUtf8ToWide promise them, without their faults.
size_t EncodeUtf8(std::u16string_view source, std::span<char> destination);
size_t DecodeUtf8(std::string_view source, std::span<char16_t> destination);

// The whole text; empty when it is empty or malformed, a lone surrogate included.
std::string ToUtf8(std::u16string_view text);
std::u16string ToWide(std::string_view text);

}  // namespace tarn::kernel

#endif
