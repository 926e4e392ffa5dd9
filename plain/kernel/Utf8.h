// Utf8.h - conversions between UTF-16 and UTF-8, on code units and without exceptions.
#ifndef TARN_KERNEL_UTF8_H
#define TARN_KERNEL_UTF8_H

#include <cstdint>
#include <string>

namespace tarn::kernel {

// The two conversions as KernelWideToUtf8 and KernelUtf8ToWide promise them, without their faults.
int64_t EncodeUtf8(const char16_t* source, int64_t units, char* destination, int64_t bytes);
int64_t DecodeUtf8(const char* source, int64_t bytes, char16_t* destination, int64_t units);

// Units before the terminator.
int64_t WideLength(const char16_t* text);

// Whether every surrogate has its other half: what only then is a text.
bool IsWellFormed(const char16_t* text, int64_t units);

// The whole text; empty when it is empty or malformed.
std::string ToUtf8(const char16_t* text, int64_t units);
std::u16string ToWide(const std::string& text);

}  // namespace tarn::kernel

#endif
