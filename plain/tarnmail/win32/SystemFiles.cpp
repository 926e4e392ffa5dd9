#include "SystemFiles.h"

#include <windows.h>

#include <string>
#include <utility>
#include <vector>

#include "LastError.h"
#include "WriteAll.h"

namespace tarn::host {
namespace {

namespace fs = std::filesystem;

// What the system makes of the path: names of devices, such as NUL, become "\\.\NUL".
std::wstring FullPath(const fs::path& path) {
  std::vector<wchar_t> text(MAX_PATH);
  for (;;) {
    const auto room = static_cast<DWORD>(text.size());
    const DWORD length = GetFullPathNameW(path.c_str(), room, text.data(), nullptr);
    if (length < room) return {text.data(), length};
    text.resize(length);
  }
}

bool IsDevice(const std::wstring& fullPath) { return fullPath.compare(0, 4, L"\\\\.\\") == 0; }

// A name that no file can have is the name of no file.
bool MeansMissing(DWORD error) {
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ||
         error == ERROR_INVALID_NAME || error == ERROR_FILENAME_EXCED_RANGE ||
         error == ERROR_DIRECTORY || error == ERROR_INVALID_DRIVE || error == ERROR_BAD_NETPATH ||
         error == ERROR_BAD_NET_NAME || error == ERROR_BAD_PATHNAME;
}

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// INVALID_HANDLE_VALUE when it cannot be opened.
HANDLE Open(const fs::path& path, DWORD access, DWORD share, DWORD disposition) {
  return CreateFileW(path.c_str(), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL,
                     nullptr);
}

HANDLE AsHandle(intptr_t file) { return reinterpret_cast<HANDLE>(file); }

}  // namespace

FileKind KindOfFile(const fs::path& path, std::error_code& error) {
  error.clear();
  const std::wstring fullPath = FullPath(path);
  if (IsDevice(fullPath)) return FileKind::Other;
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    if (MeansMissing(GetLastError())) return FileKind::Missing;
    error = LastError();
    return FileKind::Unknown;
  }
  return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? FileKind::Directory : FileKind::Regular;
}

std::error_code CheckReadable(const fs::path& path) {
  const HANDLE handle = Open(path, GENERIC_READ, kShareAll, OPEN_EXISTING);
  if (handle == INVALID_HANDLE_VALUE) return LastError();
  CloseHandle(handle);
  return {};
}

fs::path TargetOfLinks(const fs::path& path, std::error_code& error) {
  error.clear();
  const DWORD attributes = GetFileAttributesW(path.c_str());
  const bool isLink =
      attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
  if (!isLink) return path;
  const HANDLE handle = Open(path, FILE_READ_ATTRIBUTES, kShareAll, OPEN_EXISTING);
  if (handle == INVALID_HANDLE_VALUE) {
    error = LastError();
    return {};
  }
  std::vector<wchar_t> text(MAX_PATH);
  DWORD length = 0;
  for (;;) {
    const auto room = static_cast<DWORD>(text.size());
    length = GetFinalPathNameByHandleW(handle, text.data(), room, FILE_NAME_NORMALIZED);
    if (length < room) break;
    text.resize(length);
  }
  if (length == 0) error = LastError();
  CloseHandle(handle);
  return std::wstring(text.data(), length);
}

std::error_code MoveIntoPlace(const fs::path& from, const fs::path& to) {
  // The system refuses this by itself; Wine (8.0) does not.
  const DWORD attributes = GetFileAttributesW(to.c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
    return {ERROR_ACCESS_DENIED, std::system_category()};
  }
  const bool moved = MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
  return moved ? std::error_code() : LastError();
}

WritableFile::~WritableFile() {
  if (file_ != kClosed) CloseHandle(AsHandle(file_));
}

std::error_code WritableFile::create(const fs::path& path) {
  file_ = reinterpret_cast<intptr_t>(Open(path, GENERIC_WRITE, FILE_SHARE_READ, CREATE_NEW));
  if (file_ != kClosed) return {};
  const bool exists = GetLastError() == ERROR_FILE_EXISTS || GetLastError() == ERROR_ALREADY_EXISTS;
  return exists ? std::make_error_code(std::errc::file_exists) : LastError();
}

std::error_code WritableFile::openDevice(const fs::path& path) {
  file_ = reinterpret_cast<intptr_t>(Open(path, GENERIC_WRITE, kShareAll, OPEN_EXISTING));
  return file_ == kClosed ? LastError() : std::error_code();
}

std::error_code WritableFile::writeAndClose(std::string_view bytes) {
  const std::error_code error = WriteAll(AsHandle(file_), bytes);
  const bool closed = CloseHandle(AsHandle(std::exchange(file_, kClosed))) != 0;
  return !error && !closed ? LastError() : error;
}

}  // namespace tarn::host
