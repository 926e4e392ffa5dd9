// CodePages.cpp - the system's own conversions, with flags 0, but for UTF-8.
#include "Platform/CodePages.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

#include "Platform/Utf8.h"
#include "Platform/Utf8CodePage.h"
#include "Platform/win32/WideText.h"

namespace tarn::platform {
namespace {

constexpr char kDefaultByte[] = "?";

// CP_ACP, CP_OEMCP, CP_MACCP and CP_THREAD_ACP are settings of a machine, thread or user. A number
// in a text never means them.
constexpr bool IsSetting(uint32_t codePage) { return codePage <= CP_THREAD_ACP; }

bool IsConvertible(uint32_t codePage, size_t size) noexcept {
  return !IsSetting(codePage) && size != 0 && size <= INT32_MAX;
}

// Sizes as the system's calls take them.
template <typename Unit>
int Capacity(std::span<Unit> destination) noexcept {
  return static_cast<int>(std::min<size_t>(destination.size(), INT32_MAX));
}

// What page 42 holds. The system checks it only when it writes, not when it counts.
bool AreSymbols(std::u16string_view text) noexcept {
  return std::all_of(text.begin(), text.end(), [](char16_t unit) {
    return unit < 0x20 || (unit >= 0xF020 && unit <= 0xF0FF);
  });
}

// UTF-7, the symbol page and those that the system converts by code and not by table refuse to be
// asked for a default character or the flag, with the same error as a page that is not known.
bool MayRefuseTheFlag() noexcept { return GetLastError() == ERROR_INVALID_PARAMETER; }

}  // namespace

size_t BytesToUtf16(uint32_t codePage, std::string_view source,
                    std::span<char16_t> destination) noexcept {
  if (!IsConvertible(codePage, source.size())) return 0;
  if (codePage == kCodePageUtf8) return Utf8ToUtf16(source, destination);
  const int size = MultiByteToWideChar(codePage, 0, source.data(), static_cast<int>(source.size()),
                                       AsWide(destination.data()), Capacity(destination));
  return static_cast<size_t>(size);
}

EncodedBytes Utf16ToBytes(uint32_t codePage, std::u16string_view source,
                          std::span<char> destination) noexcept {
  if (!IsConvertible(codePage, source.size())) return {};
  if (codePage == kCodePageUtf8) return Utf16ToUtf8(source, destination);
  if (codePage == kCodePageSymbol && !AreSymbols(source)) return {};
  const auto convert = [&](const char* defaultByte, BOOL* flag) {
    const int size =
        WideCharToMultiByte(codePage, 0, AsWide(source.data()), static_cast<int>(source.size()),
                            destination.data(), Capacity(destination), defaultByte, flag);
    return static_cast<size_t>(size);
  };
  BOOL flag = FALSE;
  size_t size = convert(kDefaultByte, &flag);
  if (size != 0) return {size, flag != FALSE};
  if (MayRefuseTheFlag()) size = convert(nullptr, nullptr);
  return {size, size != 0 && !IsWellFormed(source)};
}

uint32_t AnsiCodePage() noexcept { return GetACP(); }

bool IsCodePageSupported(uint32_t codePage) noexcept {
  return BytesToUtf16(codePage, " ", {}) != 0;
}

}  // namespace tarn::platform
