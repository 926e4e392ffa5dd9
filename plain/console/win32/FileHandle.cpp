#include "FileHandle.h"

#include "NativePath.h"

namespace tarn::host {
namespace {

FileHandle Owned(HANDLE handle) {
  return FileHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

}  // namespace

FileHandle OpenPath(const std::filesystem::path& path, DWORD access, DWORD share,
                    DWORD disposition) {
  return Owned(CreateFileW(NativePath(path).c_str(), access, share, nullptr, disposition,
                           FILE_ATTRIBUTE_NORMAL, nullptr));
}

FileHandle OpenForQuestions(const std::filesystem::path& path) {
  return Owned(CreateFileW(NativePath(path).c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr,
                           OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

}  // namespace tarn::host
