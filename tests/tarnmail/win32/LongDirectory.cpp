#include "tarnmail/win32/LongDirectory.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <string>

namespace tarn::test {
namespace {

constexpr int kLevels = 3;

std::wstring Verbatim(const std::filesystem::path& path) { return L"\\\\?\\" + path.native(); }

}  // namespace

LongDirectory::LongDirectory() : path_(top_.path()) {
  path_.make_preferred();
  for (int i = 0; i < kLevels; ++i) {
    path_ /= std::wstring(100, L'n');
    EXPECT_NE(CreateDirectoryW(Verbatim(path_).c_str(), nullptr), 0);
  }
}

LongDirectory::~LongDirectory() {
  for (int i = 0; i < kLevels; ++i) {
    EXPECT_NE(RemoveDirectoryW(Verbatim(path_).c_str()), 0);
    path_ = path_.parent_path();
  }
}

void LongDirectory::write(const wchar_t* name, std::string_view bytes) const {
  const HANDLE file = CreateFileW(Verbatim(path_ / name).c_str(), GENERIC_WRITE, 0, nullptr,
                                  CREATE_ALWAYS, 0, nullptr);
  DWORD written = 0;
  EXPECT_NE(WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr), 0);
  CloseHandle(file);
}

std::string LongDirectory::read(const wchar_t* name) const {
  const HANDLE file = CreateFileW(Verbatim(path_ / name).c_str(), GENERIC_READ, 0, nullptr,
                                  OPEN_EXISTING, 0, nullptr);
  std::string bytes(1 << 16, '\0');
  DWORD got = 0;
  EXPECT_NE(ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &got, nullptr), 0);
  CloseHandle(file);
  bytes.resize(got);
  return bytes;
}

void LongDirectory::remove(const wchar_t* name) const {
  EXPECT_NE(DeleteFileW(Verbatim(path_ / name).c_str()), 0);
}

}  // namespace tarn::test
