#include "WriteAll.h"

#include <windows.h>

#include <algorithm>

#include "ConsoleText.h"
#include "LastError.h"

namespace tarn::host {
namespace {

constexpr size_t kMostBytes = 1 << 20;

std::error_code WriteToConsole(HANDLE console, std::wstring_view text) {
  while (!text.empty()) {
    DWORD written = 0;
    if (WriteConsoleW(console, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) ==
        0) {
      return LastError();
    }
    text.remove_prefix(written);
  }
  return {};
}

std::error_code WriteToConsole(HANDLE console, std::string_view bytes) {
  while (!bytes.empty()) {
    const std::error_code error = WriteToConsole(console, TakeConsoleText(bytes));
    if (error) return error;
  }
  return {};
}

}  // namespace

std::error_code WriteAll(void* handle, std::string_view bytes) {
  DWORD mode = 0;
  if (GetConsoleMode(handle, &mode) != 0) return WriteToConsole(handle, bytes);
  while (!bytes.empty()) {
    const auto part = static_cast<DWORD>(std::min(bytes.size(), kMostBytes));
    DWORD written = 0;
    if (WriteFile(handle, bytes.data(), part, &written, nullptr) == 0) return LastError();
    bytes.remove_prefix(written);
  }
  return {};
}

}  // namespace tarn::host
