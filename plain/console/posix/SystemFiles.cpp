#include "SystemFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <utility>

#include "Text.h"
#include "WriteAll.h"

namespace tarn::host {

namespace fs = std::filesystem;

FileKind KindOfFile(const fs::path& path, std::error_code& error) {
  const fs::file_status status = fs::status(path, error);
  if (status.type() == fs::file_type::not_found) {
    error.clear();
    return FileKind::Missing;
  }
  if (error) return FileKind::Unknown;
  if (fs::is_directory(status)) return FileKind::Directory;
  if (fs::is_fifo(status)) return FileKind::Pipe;
  return fs::is_regular_file(status) ? FileKind::Regular : FileKind::Other;
}

std::error_code CheckReadable(const fs::path& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return LastError();
  close(descriptor);
  return {};
}

std::error_code CheckWritable(const fs::path& path) {
  const bool mayWrite = faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
  return mayWrite ? std::error_code() : LastError();
}

fs::path TargetOfLinks(const fs::path& path, std::error_code& error) {
  constexpr int kMostLinks = 40;
  fs::path target = path;
  for (int links = 0; fs::is_symlink(fs::symlink_status(target, error)); ++links) {
    if (links == kMostLinks) {
      error = std::make_error_code(std::errc::too_many_symbolic_link_levels);
      return {};
    }
    const fs::path next = fs::read_symlink(target, error);
    if (error) return {};
    target = target.parent_path() / next;
  }
  // What does not exist yet is no error. A file whose name has gone, as that of an open descriptor
  // may have, leads to no name that is its own.
  const bool exists = fs::exists(path, error);
  error.clear();
  if (exists && !IsSameFile(path, target)) {
    error = std::make_error_code(std::errc::no_such_file_or_directory);
  }
  return target;
}

bool IsSameFile(const fs::path& one, const fs::path& other) {
  std::error_code ignored;
  return fs::equivalent(one, other, ignored);
}

fs::path FullDirectory(const fs::path& path, std::error_code& error) {
  return fs::canonical(path, error);
}

std::error_code MoveIntoPlace(const fs::path& from, const fs::path& to) {
  std::error_code error;
  fs::rename(from, to, error);
  return error;
}

void RemoveFile(const fs::path& path) {
  std::error_code ignored;
  fs::remove(path, ignored);
}

fs::path MakePrivateFolder(const fs::path& directory, std::error_code& error) {
  std::string path = directory / "tarnmail-XXXXXX";
  error = mkdtemp(path.data()) == nullptr ? LastError() : std::error_code();
  return error ? fs::path() : fs::path(path);
}

void RemoveTree(const fs::path& path) {
  // A file that comes while the others go keeps the folder; nothing comes into one that is gone.
  constexpr int kMostAttempts = 1000;
  std::error_code error;
  for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
    fs::remove_all(path, error);
    // Another thread that removes the same takes files from under this one.
    if (error != std::errc::directory_not_empty && error != std::errc::no_such_file_or_directory) {
      return;
    }
  }
}

fs::path SystemTempDirectory() {
  const char* const named = std::getenv("TMPDIR");
  // A name that is no UTF-8 could not be handed to the filter.
  const bool isUsable = named != nullptr && *named != '\0' && WideFromUtf8(named);
  return isUsable ? named : "/tmp";
}

std::error_code MakeLink(const fs::path& target, const fs::path& link) {
  std::error_code error;
  fs::create_symlink(target, link, error);
  return error;
}

WritableFile::~WritableFile() {
  if (file_ != kClosed) close(static_cast<int>(file_));
}

std::error_code WritableFile::create(const fs::path& path) {
  file_ = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  return file_ == kClosed ? LastError() : std::error_code();
}

std::error_code WritableFile::openDevice(const fs::path& path) {
  file_ = open(path.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC);
  return file_ == kClosed ? LastError() : std::error_code();
}

void WritableFile::takePermissionsOf(const fs::path& path) {
  struct stat facts = {};
  if (stat(path.c_str(), &facts) != 0) return;
  // What cannot be given is more than the owner of the file may have.
  if (fchmod(static_cast<int>(file_), facts.st_mode & 0777) != 0) return;
}

std::error_code WritableFile::write(std::string_view bytes) {
  return WriteAll(static_cast<int>(file_), bytes);
}

std::error_code WritableFile::writeAndClose(std::string_view bytes) {
  const std::error_code error = write(bytes);
  const bool closed = close(static_cast<int>(std::exchange(file_, kClosed))) == 0;
  return !error && !closed ? LastError() : error;
}

}  // namespace tarn::host
