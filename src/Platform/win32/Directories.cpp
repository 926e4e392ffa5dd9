#include "Platform/Directories.h"

#include <windows.h>

#include "Platform/win32/WideText.h"

namespace tarn::platform {

DirectoryStatus MakeDirectory(const char16_t* path) noexcept {
  if (path == nullptr || *path == u'\0') return DirectoryStatus::Failed;
  if (CreateDirectoryW(AsWide(path), nullptr) != FALSE) return DirectoryStatus::Created;
  return GetLastError() == ERROR_ALREADY_EXISTS ? DirectoryStatus::AlreadyExisted
                                                : DirectoryStatus::Failed;
}

bool RemoveEmptyDirectory(const char16_t* path) noexcept {
  return path != nullptr && *path != u'\0' && RemoveDirectoryW(AsWide(path)) != FALSE;
}

}  // namespace tarn::platform
