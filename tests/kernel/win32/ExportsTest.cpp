#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <set>
#include <string>

#include "Ordinals.h"
#include "support/PeFile.h"

namespace tarn::test {
namespace {

// Where a call through the pointer ends: a program may hold the address of a jump of its own,
// through its table of imports ("jmp [rip + distance]").
const void* Target(AnyFunction function) {
  const auto* const code = reinterpret_cast<const unsigned char*>(function);
  if (code[0] != 0xFF || code[1] != 0x25) return code;
  int32_t distance = 0;
  std::memcpy(&distance, code + 2, sizeof distance);
  const void* target = nullptr;
  std::memcpy(&target, code + 6 + distance, sizeof target);
  return target;
}

std::set<uint32_t> AllNumbers() {
  std::set<uint32_t> numbers;
  for (const Ordinal& row : Ordinals()) numbers.insert(row.number);
  return numbers;
}

TEST(Exports, AreTheNumbersOfTheOperationsAndNoNames) {
  const PeExports exports = PeFile(TARN_KERNEL_LIBRARY).exports();
  EXPECT_EQ(exports.ordinals, AllNumbers());
  EXPECT_EQ(exports.names, std::set<std::string>());
}

TEST(Exports, EachNumberIsTheOperationThatProgramsAreLinkedTo) {
  const HMODULE library = ::GetModuleHandleW(L"Tarnbase.dll");
  ASSERT_NE(library, nullptr);
  for (const Ordinal& row : Ordinals()) {
    const FARPROC byNumber = ::GetProcAddress(library, MAKEINTRESOURCEA(row.number));
    EXPECT_EQ(reinterpret_cast<const void*>(byNumber), Target(row.function)) << row.name;
    const std::string name(row.name);
    EXPECT_EQ(::GetProcAddress(library, name.c_str()), nullptr) << name;
  }
}

// The numbers of two operations that were mixed up would pass all of the above.
TEST(Exports, ANumberDoesWhatItsOperationDoes) {
  const HMODULE library = ::GetModuleHandleW(L"Tarnbase.dll");
  const auto call = [library]<typename Function>(Function*, uint32_t number) {
    return reinterpret_cast<Function*>(
        reinterpret_cast<void*>(::GetProcAddress(library, MAKEINTRESOURCEA(number))));
  };
  void* const block = call(&KernelAllocZero, 2)(3, 2, 1, u"ExportsTest.cpp");
  ASSERT_NE(block, nullptr);
  PlainKernelUsageRecord usage = {};
  call(&PlainKernelUsage, 106)(&usage);
  EXPECT_EQ(usage.liveBlocks, 1U);
  EXPECT_EQ(usage.liveBytes, 6U);
  call(&KernelFree, 4)(block, 1, u"ExportsTest.cpp");
  EXPECT_EQ(call(&KernelMapLastError, 23)(-5), -5);
  call(&PlainKernelSetLanguage, 101)(0x0407);
  EXPECT_EQ(call(&KernelGetLanguage, 27)(), 0x0407U);
  call(&PlainKernelSetIoMode, 102)(3);
  EXPECT_EQ(call(&KernelIoModeGet, 28)(), 3);
  EXPECT_EQ(call(&KernelLoaderEntry, 35)(nullptr, 0, 0, 0), 1);
}

TEST(Exports, ThisProgramImportsTheKernelByNumber) {
  wchar_t path[MAX_PATH];
  ASSERT_LT(::GetModuleFileNameW(nullptr, path, MAX_PATH), DWORD{MAX_PATH});
  for (const PeImport& import : PeFile(path).imports()) {
    if (import.library != "Tarnbase.dll") continue;
    EXPECT_EQ(import.ordinals, AllNumbers());
    EXPECT_EQ(import.names, std::set<std::string>());
    return;
  }
  ADD_FAILURE() << "no import of Tarnbase.dll";
}

TEST(Exports, TheKernelNeedsTheSystemsLibrariesOnly) {
  const std::set<std::string> system = {"bcrypt.dll", "gdi32.dll", "kernel32.dll", "msvcrt.dll"};
  std::set<std::string> needed;
  for (const PeImport& import : PeFile(TARN_KERNEL_LIBRARY).imports()) {
    std::string name = import.library;
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    needed.insert(name);
  }
  EXPECT_EQ(needed, system);
}

}  // namespace
}  // namespace tarn::test
