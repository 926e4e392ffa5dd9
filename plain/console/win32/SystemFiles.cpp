#include "SystemFiles.h"

#include <windows.h>

#include <array>
#include <optional>
#include <random>
#include <string>
#include <utility>

#include "FileHandle.h"
#include "FinalPath.h"
#include "LastError.h"
#include "NativePath.h"
#include "OwnerOnly.h"
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
  const std::wstring full = FullPath(path);
  if (IsPipePath(full)) return FileKind::Pipe;
  if (IsDevicePath(full)) return FileKind::Other;
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

// Rights in the file's access list show when the file is replaced.
std::error_code CheckWritable(const fs::path& path) {
  const DWORD attributes = GetFileAttributesW(NativePath(path).c_str());
  const bool isReadOnly =
      attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
  return isReadOnly ? std::error_code(ERROR_ACCESS_DENIED, std::system_category())
                    : std::error_code();
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
  const std::error_code readOnly = CheckWritable(to);
  if (readOnly) return readOnly;
  const bool moved =
      MoveFileExW(NativePath(from).c_str(), NativePath(to).c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
  return moved ? std::error_code() : LastError();
}

void RemoveFile(const fs::path& path) { DeleteFileW(NativePath(path).c_str()); }

fs::path MakePrivateFolder(const fs::path& directory, std::error_code& error) {
  OwnerOnly owner;
  if (owner.attributes() == nullptr) {
    error = std::error_code(static_cast<int>(owner.error()), std::system_category());
    return {};
  }
  std::random_device random;
  for (;;) {
    const fs::path path = directory / ("tarnmail-" + std::to_string(random()));
    const bool made = CreateDirectoryW(NativePath(path).c_str(), owner.attributes()) != 0;
    error = made ? std::error_code() : LastError();
    if (made) return path;
    if (GetLastError() != ERROR_ALREADY_EXISTS) return {};
  }
}

namespace {

// One level; what is not gone yet stays in the way of its folder.
void RemoveTreeOnce(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  const bool isFolder = attributes != INVALID_FILE_ATTRIBUTES &&
                        (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 &&
                        (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0;
  if (isFolder) {
    WIN32_FIND_DATAW found = {};
    const HANDLE search = FindFirstFileW((path + L"\\*").c_str(), &found);
    for (BOOL more = search != INVALID_HANDLE_VALUE; more != 0;
         more = FindNextFileW(search, &found)) {
      const std::wstring name = found.cFileName;
      if (name != L"." && name != L"..") RemoveTreeOnce(path + L"\\" + name);
    }
    if (search != INVALID_HANDLE_VALUE) FindClose(search);
    RemoveDirectoryW(path.c_str());
  } else if (DeleteFileW(path.c_str()) == 0) {
    RemoveDirectoryW(path.c_str());
  }
}

}  // namespace

void RemoveTree(const fs::path& path) {
  // A file that is open cannot go; whoever has it open is about to be done with it.
  constexpr int kMostAttempts = 100;
  constexpr DWORD kMilliseconds = 10;
  const std::wstring native = NativePath(path);
  for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
    RemoveTreeOnce(native);
    if (GetFileAttributesW(native.c_str()) == INVALID_FILE_ATTRIBUTES) return;
    Sleep(kMilliseconds);
  }
}

fs::path SystemTempDirectory() {
  std::array<wchar_t, MAX_PATH + 2> path = {};
  const DWORD units = GetTempPathW(static_cast<DWORD>(path.size()), path.data());
  return units < path.size() ? fs::path(path.data(), path.data() + units) : fs::path();
}

std::error_code MakeLink(const fs::path&, const fs::path&) {
  return std::make_error_code(std::errc::operation_not_supported);
}

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

void WritableFile::takePermissionsOf(const fs::path&) {
  // Files have them from the directory that they are in.
}

std::error_code WritableFile::write(std::string_view bytes) {
  return WriteAll(AsHandle(file_), bytes);
}

std::error_code WritableFile::writeAndClose(std::string_view bytes) {
  const std::error_code error = write(bytes);
  const bool closed = CloseHandle(AsHandle(std::exchange(file_, kClosed))) != 0;
  return !error && !closed ? LastError() : error;
}

}  // namespace tarn::host
