#include "RandomDraws.h"

#include <gtest/gtest.h>

#include "SystemHeaders.h"
// Behind the header that it builds on.
#include <bcrypt.h>

#include <atomic>
#include <cstring>
#include <string_view>

namespace {

std::atomic<int> zeroDraws{0};

NTSTATUS WINAPI Draw(BCRYPT_ALG_HANDLE algorithm, PUCHAR buffer, ULONG length, ULONG flags) {
  if (zeroDraws.load() > 0) {
    --zeroDraws;
    std::memset(buffer, 0, length);
    return 0;
  }
  return ::BCryptGenRandom(algorithm, buffer, length, flags);
}

template <typename T>
T* At(HMODULE module, size_t offset) {
  return reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(module) + offset);
}

// The place where the loaded module keeps the address of the function that it imports by name; null
// when it imports no such function.
ULONGLONG* ImportedAddress(HMODULE module, std::string_view function) {
  const auto* const headers = At<IMAGE_NT_HEADERS64>(
      module, static_cast<size_t>(At<IMAGE_DOS_HEADER>(module, 0)->e_lfanew));
  const IMAGE_DATA_DIRECTORY& imports =
      headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  for (auto* library = At<IMAGE_IMPORT_DESCRIPTOR>(module, imports.VirtualAddress);
       library->Name != 0; ++library) {
    const auto* names = At<ULONGLONG>(module, library->OriginalFirstThunk);
    auto* addresses = At<ULONGLONG>(module, library->FirstThunk);
    for (; *names != 0; ++names, ++addresses) {
      if ((*names & IMAGE_ORDINAL_FLAG64) != 0) continue;
      if (At<IMAGE_IMPORT_BY_NAME>(module, *names)->Name == function) return addresses;
    }
  }
  return nullptr;
}

// Puts Draw into the kernel's table of imports.
bool StandInForTheSystem() {
  ULONGLONG* const place = ImportedAddress(::GetModuleHandleW(L"Tarnbase.dll"), "BCryptGenRandom");
  DWORD before = 0;
  if (place == nullptr || !::VirtualProtect(place, sizeof *place, PAGE_READWRITE, &before)) {
    return false;
  }
  *place = reinterpret_cast<ULONGLONG>(&Draw);
  return ::VirtualProtect(place, sizeof *place, before, &before) != 0;
}

}  // namespace

namespace tarn::test {

void GiveZeros(int draws) {
  static const bool ready = StandInForTheSystem();
  ASSERT_TRUE(ready);
  zeroDraws = draws;
}

int ZeroDrawsLeft() { return zeroDraws; }

}  // namespace tarn::test
