// InputStream.h - bytes that come one after the other: standard input, a pipe. One folder a system
// implements it.
#ifndef TARN_CONSOLE_INPUTSTREAM_H
#define TARN_CONSOLE_INPUTSTREAM_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <system_error>

namespace tarn::host {

// A stream that is open, or is not. Closes what it opened; standard input stays open.
class InputStream {
 public:
  InputStream() = default;
  InputStream(const InputStream&) = delete;
  InputStream& operator=(const InputStream&) = delete;
  ~InputStream();

  std::error_code useStandardInput();
  // Waits for somebody who writes to the pipe.
  std::error_code openPipe(const std::filesystem::path& path);

  // Waits for bytes; `got` is their number, and 0 at the end.
  std::error_code read(std::span<char> room, size_t& got);

 private:
  static constexpr intptr_t kClosed = -1;
  intptr_t stream_ = kClosed;  // the system's number: a descriptor, a HANDLE
  bool isOwned_ = false;
};

}  // namespace tarn::host

#endif
