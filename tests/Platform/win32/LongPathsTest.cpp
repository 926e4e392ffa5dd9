// Paths beyond the system's limits, and directories that have them.
#include "Platform/win32/LongPaths.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "Platform/Directories.h"
#include "support/TempDirectory.h"

namespace tarn::platform {
namespace {

// What the system refuses of paths without a prefix; Wine (8.0) does not.
bool IsTooLong(const wchar_t* path) {
  const std::wstring_view text(path);
  return text.size() >= MAX_PATH - 12 && !text.starts_with(L"\\\\?\\");
}

std::wstring LongName(size_t units) { return std::wstring(units, L'n'); }

TEST(WithLongPrefix, LeavesShortPathsAsTheyAre) {
  EXPECT_EQ(WithLongPrefix(L"a/b", L"C:\\d\\a\\b"), L"a/b");
  EXPECT_EQ(WithLongPrefix(L"", L""), L"");
  EXPECT_EQ(WithLongPrefix(L"a", L"C:\\" + LongName(244)), L"a");
}

TEST(WithLongPrefix, GivesLongPathsInFull) {
  EXPECT_EQ(WithLongPrefix(L"a", L"C:\\" + LongName(245)), L"\\\\?\\C:\\" + LongName(245));
  EXPECT_EQ(WithLongPrefix(L"C:/" + LongName(400), L"C:\\" + LongName(400)),
            L"\\\\?\\C:\\" + LongName(400));
}

TEST(WithLongPrefix, KnowsServers) {
  EXPECT_EQ(WithLongPrefix(L"//server/share/a", L"\\\\server\\share\\" + LongName(300)),
            L"\\\\?\\UNC\\server\\share\\" + LongName(300));
}

TEST(WithLongPrefix, LeavesPathsThatHaveOne) {
  for (const std::wstring front :
       {L"\\\\?\\C:\\", L"\\\\?\\UNC\\server\\share\\", L"\\\\.\\pipe\\"}) {
    const std::wstring path = front + LongName(300);
    EXPECT_EQ(WithLongPrefix(path, path), path);
  }
}

TEST(LongDirectories, AreMadeAndRemoved) {
  const test::TempDirectory directory;
  const std::u16string outer = (directory.path() / LongName(200)).u16string();
  const std::u16string inner = outer + u"\\" + std::u16string(200, u'm');
  ASSERT_EQ(MakeDirectory(outer.c_str()), DirectoryStatus::Created);
  EXPECT_EQ(MakeDirectory(inner.c_str()), DirectoryStatus::Created);
  EXPECT_EQ(MakeDirectory(inner.c_str()), DirectoryStatus::AlreadyExisted);
  EXPECT_TRUE(RemoveEmptyDirectory(inner.c_str()));
  EXPECT_FALSE(RemoveEmptyDirectory(inner.c_str()));
  EXPECT_TRUE(RemoveEmptyDirectory(outer.c_str()));
}

}  // namespace
}  // namespace tarn::platform

// The system's calls with its limits.
extern "C" {

BOOL __real_CreateDirectoryW(const wchar_t* path, SECURITY_ATTRIBUTES* security);
BOOL __real_RemoveDirectoryW(const wchar_t* path);

BOOL __wrap_CreateDirectoryW(const wchar_t* path, SECURITY_ATTRIBUTES* security) {
  if (!tarn::platform::IsTooLong(path)) return __real_CreateDirectoryW(path, security);
  SetLastError(ERROR_FILENAME_EXCED_RANGE);
  return FALSE;
}

BOOL __wrap_RemoveDirectoryW(const wchar_t* path) {
  if (!tarn::platform::IsTooLong(path)) return __real_RemoveDirectoryW(path);
  SetLastError(ERROR_FILENAME_EXCED_RANGE);
  return FALSE;
}

}  // extern "C"
