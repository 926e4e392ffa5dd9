// ConsoleText.h - bytes as a console of Windows takes them.
#ifndef TARN_CONSOLE_WIN32_CONSOLETEXT_H
#define TARN_CONSOLE_WIN32_CONSOLETEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace tarn::host {

// Consoles refuse texts that do not fit 64 KiB.
constexpr size_t kMostConsoleBytes = 1 << 13;

// Takes at most that many bytes from the front of `bytes`, which is not empty, and gives them as
// UTF-16. Characters stay whole; what is not UTF-8 becomes U+FFFD.
std::wstring TakeConsoleText(std::string_view& bytes);

}  // namespace tarn::host

#endif
