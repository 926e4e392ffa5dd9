// Paths for the calls of Windows.

#include "console/win32/NativePath.h"

#include <gtest/gtest.h>

#include "support/TempDirectory.h"

namespace tarn::host {
namespace {

std::wstring LongName(size_t units) { return std::wstring(units, L'n'); }

TEST(NativePath, ResolvesLongPathsAlone) {
  EXPECT_EQ(NativePath("a/../b"), L"a/../b");
  const test::TempDirectory directory;
  std::filesystem::path top = directory.path();
  top.make_preferred();
  EXPECT_EQ(NativePath(top / LongName(200) / ".." / LongName(201) / LongName(100)),
            L"\\\\?\\" + (top / LongName(201) / LongName(100)).native());
  EXPECT_EQ(NativePath(LongName(300)),
            L"\\\\?\\" + (std::filesystem::current_path() / LongName(300)).native());
  EXPECT_EQ(NativePath(""), L"");
}

TEST(FullPath, TellsDevices) {
  EXPECT_TRUE(IsDevicePath(FullPath("NUL")));
  EXPECT_TRUE(IsDevicePath(FullPath("\\\\.\\NUL")));
  EXPECT_FALSE(IsDevicePath(FullPath("null")));
  EXPECT_FALSE(IsDevicePath(FullPath("\\\\?\\C:\\x")));
  EXPECT_EQ(FullPath(""), L"");
}

TEST(IsPipePath, KnowsPipesAmongDevices) {
  EXPECT_TRUE(IsPipePath(FullPath("\\\\.\\pipe\\mail")));
  EXPECT_TRUE(IsPipePath(L"\\\\.\\PIPE\\a"));
  for (const wchar_t* path :
       {L"", L"\\\\.\\NUL", L"\\\\.\\pipe\\", L"C:\\pipe\\mail", L"pipe\\mail"}) {
    EXPECT_FALSE(IsPipePath(path));
  }
}

TEST(IsConsolePath, KnowsItsNames) {
  for (const wchar_t* path : {L"CON", L"con", L"\\\\.\\CON", L"CONOUT$", L"\\\\.\\conout$"}) {
    EXPECT_TRUE(IsConsolePath(path));
  }
  EXPECT_TRUE(IsConsolePath(FullPath("con")));
  for (const wchar_t* path :
       {L"", L"CONIN$", L"CO", L"CON2", L"C:\\CON", L"\\\\.\\NUL", L"\\\\.\\", L"\\\\?\\CON"}) {
    EXPECT_FALSE(IsConsolePath(path));
  }
}

}  // namespace
}  // namespace tarn::host
