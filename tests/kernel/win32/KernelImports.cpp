#include "KernelImports.h"

#include <gtest/gtest.h>
#include <windows.h>

namespace tarn::test {
namespace {

static_assert(sizeof(ULONGLONG) == sizeof(uint64_t));

template <typename T>
T* At(HMODULE module, size_t offset) {
  return reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(module) + offset);
}

}  // namespace

uint64_t* ImportStandIn::PlaceOf(std::string_view function) {
  const HMODULE module = ::GetModuleHandleW(L"Tarnbase.dll");
  const auto* const headers = At<IMAGE_NT_HEADERS64>(
      module, static_cast<size_t>(At<IMAGE_DOS_HEADER>(module, 0)->e_lfanew));
  const IMAGE_DATA_DIRECTORY& imports =
      headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  for (auto* library = At<IMAGE_IMPORT_DESCRIPTOR>(module, imports.VirtualAddress);
       library->Name != 0; ++library) {
    const auto* names = At<uint64_t>(module, library->OriginalFirstThunk);
    auto* addresses = At<uint64_t>(module, library->FirstThunk);
    for (; *names != 0; ++names, ++addresses) {
      if ((*names & IMAGE_ORDINAL_FLAG64) != 0) continue;
      if (At<IMAGE_IMPORT_BY_NAME>(module, *names)->Name == function) return addresses;
    }
  }
  return nullptr;
}

void ImportStandIn::Put(uint64_t address) const {
  ASSERT_NE(place_, nullptr);
  DWORD before = 0;
  ASSERT_TRUE(::VirtualProtect(place_, sizeof *place_, PAGE_READWRITE, &before));
  *place_ = address;
  ASSERT_TRUE(::VirtualProtect(place_, sizeof *place_, before, &before));
}

}  // namespace tarn::test
