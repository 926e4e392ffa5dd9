// CodePages.cpp - the system's own conversions, with flags 0, but for UTF-8.
#include "Platform/CodePages.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>

#include "Platform/Utf8.h"
#include "Platform/Utf8CodePage.h"
#include "Platform/win32/WideText.h"

namespace tarn::platform {
namespace {

constexpr char kDefaultByte[] = "?";

// CP_ACP, CP_OEMCP, CP_MACCP and CP_THREAD_ACP are settings of a machine, thread or user. A number
// in a text never means them.
constexpr bool IsSetting(uint32_t codePage) { return codePage <= CP_THREAD_ACP; }

template <typename Source, typename Unit>
bool AreUsable(uint32_t codePage, const Source& source, const Unit* destination,
               int32_t capacity) noexcept {
  return !IsSetting(codePage) && !source.empty() && source.size() <= INT32_MAX && capacity >= 0 &&
         (capacity == 0 || destination != nullptr);
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

int32_t BytesToUtf16(uint32_t codePage, std::string_view source, char16_t* destination,
                     int32_t capacity) noexcept {
  if (!AreUsable(codePage, source, destination, capacity)) return 0;
  if (codePage == kCodePageUtf8) return Utf8ToUtf16(source, destination, capacity);
  return MultiByteToWideChar(codePage, 0, source.data(), static_cast<int>(source.size()),
                             AsWide(destination), capacity);
}

int32_t Utf16ToBytes(uint32_t codePage, std::u16string_view source, char* destination,
                     int32_t capacity, bool* usedDefault) noexcept {
  bool ignored = false;
  bool& used = usedDefault != nullptr ? *usedDefault : ignored;
  used = false;
  if (!AreUsable(codePage, source, destination, capacity)) return 0;
  if (codePage == kCodePageUtf8) {
    const int32_t size = Utf16ToUtf8(source, destination, capacity, used);
    used = used && size != 0;
    return size;
  }
  if (codePage == kCodePageSymbol && !AreSymbols(source)) return 0;
  const auto convert = [&](const char* defaultByte, BOOL* flag) {
    return WideCharToMultiByte(codePage, 0, AsWide(source.data()), static_cast<int>(source.size()),
                               destination, capacity, defaultByte, flag);
  };
  BOOL flag = FALSE;
  int32_t size = convert(kDefaultByte, &flag);
  if (size != 0) {
    used = flag != FALSE;
  } else if (MayRefuseTheFlag()) {
    size = convert(nullptr, nullptr);
    used = size != 0 && !IsWellFormed(source);
  }
  return size;
}

uint32_t AnsiCodePage() noexcept { return GetACP(); }

bool IsCodePageSupported(uint32_t codePage) noexcept {
  return BytesToUtf16(codePage, " ", nullptr, 0) != 0;
}

}  // namespace tarn::platform
