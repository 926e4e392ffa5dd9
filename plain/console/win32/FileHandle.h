// FileHandle.h - opens a file and closes it.
#ifndef TARN_CONSOLE_WIN32_FILEHANDLE_H
#define TARN_CONSOLE_WIN32_FILEHANDLE_H

#include <windows.h>

#include <filesystem>
#include <memory>

namespace tarn::host {

struct FileHandleCloser {
  void operator()(HANDLE handle) const { CloseHandle(handle); }
};
// Null when the file could not be opened; GetLastError tells.
using FileHandle = std::unique_ptr<void, FileHandleCloser>;

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// CreateFileW. Links are followed.
FileHandle OpenPath(const std::filesystem::path& path, DWORD access, DWORD share,
                    DWORD disposition);

// Opens what exists, directories too, neither to read nor to write: possible whoever else has it
// open.
FileHandle OpenForQuestions(const std::filesystem::path& path);

}  // namespace tarn::host

#endif
