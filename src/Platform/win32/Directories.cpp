#include "Platform/Directories.h"

#include <windows.h>

#include <new>

#include "Platform/win32/LongPaths.h"
#include "Platform/win32/WideText.h"

namespace tarn::platform {

DirectoryStatus MakeDirectory(const char16_t* path) noexcept try {
  if (path == nullptr || *path == u'\0') return DirectoryStatus::Failed;
  const std::wstring native = LongPath(AsWide(path));
  if (CreateDirectoryW(native.c_str(), nullptr) != FALSE) return DirectoryStatus::Created;
  return GetLastError() == ERROR_ALREADY_EXISTS ? DirectoryStatus::AlreadyExisted
                                                : DirectoryStatus::Failed;
} catch (const std::bad_alloc&) {
  return DirectoryStatus::Failed;
}

bool RemoveEmptyDirectory(const char16_t* path) noexcept try {
  if (path == nullptr || *path == u'\0') return false;
  return RemoveDirectoryW(LongPath(AsWide(path)).c_str()) != FALSE;
} catch (const std::bad_alloc&) {
  return false;
}

}  // namespace tarn::platform
