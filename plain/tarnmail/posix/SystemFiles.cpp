#include "SystemFiles.h"

#include <fcntl.h>
#include <unistd.h>

#include <utility>

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
  return fs::is_regular_file(status) ? FileKind::Regular : FileKind::Other;
}

std::error_code CheckReadable(const fs::path& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return LastError();
  close(descriptor);
  return {};
}

fs::path TargetOfLinks(const fs::path& path, std::error_code& error) {
  return fs::canonical(path, error);
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

std::error_code WritableFile::writeAndClose(std::string_view bytes) {
  const std::error_code error = WriteAll(static_cast<int>(file_), bytes);
  const bool closed = close(static_cast<int>(std::exchange(file_, kClosed))) == 0;
  return !error && !closed ? LastError() : error;
}

}  // namespace tarn::host
