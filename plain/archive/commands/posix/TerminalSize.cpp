#include "archive/commands/TerminalSize.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <string_view>

namespace tarn::archive {
namespace {

size_t FromEnvironment(const char* name, size_t otherwise) {
  const char* const value = std::getenv(name);
  if (value == nullptr) return otherwise;
  const std::string_view text = value;
  size_t number = 0;
  const auto [stop, error] = std::from_chars(text.begin(), text.end(), number);
  const bool isNumber = error == std::errc() && stop == text.end();
  return isNumber && number > 0 && number < 10000 ? number : otherwise;
}

}  // namespace

TerminalSize SizeOfTerminal() {
  TerminalSize size;
  winsize window = {};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) != 0) window = {};
  size.columns = window.ws_col != 0 ? window.ws_col : FromEnvironment("COLUMNS", size.columns);
  size.rows = window.ws_row != 0 ? window.ws_row : FromEnvironment("LINES", size.rows);
  return size;
}

}  // namespace tarn::archive
