#include "InputStream.h"

#include <windows.h>

#include <algorithm>

#include "FileHandle.h"
#include "LastError.h"

namespace tarn::host {
namespace {

constexpr size_t kMostBytes = 1 << 20;

HANDLE AsHandle(intptr_t stream) { return reinterpret_cast<HANDLE>(stream); }

}  // namespace

InputStream::~InputStream() {
  if (isOwned_) CloseHandle(AsHandle(stream_));
}

std::error_code InputStream::useStandardInput() {
  const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
  if (input == nullptr || input == INVALID_HANDLE_VALUE) {
    return {ERROR_INVALID_HANDLE, std::system_category()};
  }
  stream_ = reinterpret_cast<intptr_t>(input);
  return {};
}

std::error_code InputStream::openPipe(const std::filesystem::path& path) {
  FileHandle pipe = OpenPath(path, GENERIC_READ, kShareAll, OPEN_EXISTING);
  if (!pipe) return LastError();
  stream_ = reinterpret_cast<intptr_t>(pipe.release());
  isOwned_ = true;
  return {};
}

std::error_code InputStream::read(std::span<char> room, size_t& got) {
  DWORD count = 0;
  got = 0;
  const auto most = static_cast<DWORD>(std::min(room.size(), kMostBytes));
  if (ReadFile(AsHandle(stream_), room.data(), most, &count, nullptr) == 0) {
    const DWORD error = GetLastError();
    // So ends a pipe whose writer has gone.
    const bool isEnd = error == ERROR_BROKEN_PIPE || error == ERROR_HANDLE_EOF;
    return isEnd ? std::error_code() : LastError();
  }
  got = count;
  return {};
}

}  // namespace tarn::host
