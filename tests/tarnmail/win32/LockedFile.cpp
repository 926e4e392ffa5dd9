#include "tarnmail/win32/LockedFile.h"

#include <gtest/gtest.h>
#include <windows.h>

namespace tarn::test {

LockedFile::LockedFile(const std::filesystem::path& path)
    : handle_(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr)) {
  EXPECT_NE(handle_, INVALID_HANDLE_VALUE) << path;
}

LockedFile::~LockedFile() { CloseHandle(handle_); }

}  // namespace tarn::test
