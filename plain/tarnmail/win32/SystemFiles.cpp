#include "SystemFiles.h"

#include <windows.h>

#include <optional>
#include <string>
#include <utility>

#include "FileHandle.h"
#include "FinalPath.h"
#include "LastError.h"
#include "NativePath.h"
#include "WriteAll.h"

namespace tarn::host {
namespace {

namespace fs = std::filesystem;

// A name that no file can have is the name of no file.
bool MeansMissing(DWORD error) {
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ||
         error == ERROR_INVALID_NAME || error == ERROR_FILENAME_EXCED_RANGE ||
         error == ERROR_DIRECTORY || error == ERROR_INVALID_DRIVE || error == ERROR_BAD_NETPATH ||
         error == ERROR_BAD_NET_NAME || error == ERROR_BAD_PATHNAME;
}

// Nothing when the file does not tell.
std::optional<BY_HANDLE_FILE_INFORMATION> FactsOf(const FileHandle& file) {
  BY_HANDLE_FILE_INFORMATION facts = {};
  if (GetFileInformationByHandle(file.get(), &facts) == 0) return std::nullopt;
  return facts;
}

HANDLE AsHandle(intptr_t file) { return reinterpret_cast<HANDLE>(file); }

// The number of INVALID_HANDLE_VALUE for no file.
intptr_t Released(FileHandle file) {
  return reinterpret_cast<intptr_t>(file ? file.release() : INVALID_HANDLE_VALUE);
}

}  // namespace

FileKind KindOfFile(const fs::path& path, std::error_code& error) {
  error.clear();
  if (IsDevicePath(FullPath(path))) return FileKind::Other;
  const FileHandle file = OpenForQuestions(path);
  if (!file) {
    if (MeansMissing(GetLastError())) return FileKind::Missing;
    error = LastError();
    return FileKind::Unknown;
  }
  if (GetFileType(file.get()) != FILE_TYPE_DISK) return FileKind::Other;
  const std::optional<BY_HANDLE_FILE_INFORMATION> facts = FactsOf(file);
  if (!facts) {
    error = LastError();
    return FileKind::Unknown;
  }
  const bool isDirectory = (facts->dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  return isDirectory ? FileKind::Directory : FileKind::Regular;
}

std::error_code CheckReadable(const fs::path& path) {
  return OpenPath(path, GENERIC_READ, kShareAll, OPEN_EXISTING) ? std::error_code() : LastError();
}

fs::path TargetOfLinks(const fs::path& path, std::error_code& error) {
  error.clear();
  const DWORD attributes = GetFileAttributesW(NativePath(path).c_str());
  const bool isLink =
      attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
  return isLink ? FinalPath(path, error) : path;
}

bool IsSameFile(const fs::path& one, const fs::path& other) {
  // Numbers of files are good while the files are open.
  const FileHandle files[] = {OpenForQuestions(one), OpenForQuestions(other)};
  if (!files[0] || !files[1]) return false;
  const auto first = FactsOf(files[0]);
  const auto second = FactsOf(files[1]);
  return first && second && first->dwVolumeSerialNumber == second->dwVolumeSerialNumber &&
         first->nFileIndexHigh == second->nFileIndexHigh &&
         first->nFileIndexLow == second->nFileIndexLow;
}

fs::path FullDirectory(const fs::path& path, std::error_code& error) {
  const std::wstring full = FullPath(path);
  error = full.empty() ? LastError() : std::error_code();
  return full;
}

std::error_code MoveIntoPlace(const fs::path& from, const fs::path& to) {
  // The system refuses this by itself; Wine (8.0) does not.
  const DWORD attributes = GetFileAttributesW(NativePath(to).c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
    return {ERROR_ACCESS_DENIED, std::system_category()};
  }
  const bool moved =
      MoveFileExW(NativePath(from).c_str(), NativePath(to).c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
  return moved ? std::error_code() : LastError();
}

void RemoveFile(const fs::path& path) { DeleteFileW(NativePath(path).c_str()); }

WritableFile::~WritableFile() {
  if (file_ != kClosed) CloseHandle(AsHandle(file_));
}

std::error_code WritableFile::create(const fs::path& path) {
  file_ = Released(OpenPath(path, GENERIC_WRITE, FILE_SHARE_READ, CREATE_NEW));
  if (file_ != kClosed) return {};
  const bool exists = GetLastError() == ERROR_FILE_EXISTS || GetLastError() == ERROR_ALREADY_EXISTS;
  return exists ? std::make_error_code(std::errc::file_exists) : LastError();
}

std::error_code WritableFile::openDevice(const fs::path& path) {
  // The system tells of a handle that it is the console's, and lets text through, only when it may
  // read too; and it opens CON for one of both alone.
  const bool isConsole = IsConsolePath(path.native()) || IsConsolePath(FullPath(path));
  file_ = Released(
      isConsole ? OpenPath(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, kShareAll, OPEN_EXISTING)
                : OpenPath(path, GENERIC_WRITE, kShareAll, OPEN_EXISTING));
  return file_ == kClosed ? LastError() : std::error_code();
}

std::error_code WritableFile::writeAndClose(std::string_view bytes) {
  const std::error_code error = WriteAll(AsHandle(file_), bytes);
  const bool closed = CloseHandle(AsHandle(std::exchange(file_, kClosed))) != 0;
  return !error && !closed ? LastError() : error;
}

}  // namespace tarn::host
