#include "InputStream.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "WriteAll.h"

namespace tarn::host {

InputStream::~InputStream() {
  if (isOwned_) close(static_cast<int>(stream_));
}

std::error_code InputStream::useStandardInput() {
  stream_ = STDIN_FILENO;
  return {};
}

std::error_code InputStream::openPipe(const std::filesystem::path& path) {
  stream_ = open(path.c_str(), O_RDONLY | O_NOCTTY | O_CLOEXEC);
  isOwned_ = stream_ != kClosed;
  return isOwned_ ? std::error_code() : LastError();
}

std::error_code InputStream::read(std::span<char> room, size_t& got) {
  ssize_t count = 0;
  do {
    count = ::read(static_cast<int>(stream_), room.data(), room.size());
  } while (count < 0 && errno == EINTR);
  got = count < 0 ? 0 : static_cast<size_t>(count);
  return count < 0 ? LastError() : std::error_code();
}

}  // namespace tarn::host
