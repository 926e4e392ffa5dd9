// Paths.h - paths between the command line, which is UTF-8, and the system.
#ifndef TARN_CONSOLE_PATHS_H
#define TARN_CONSOLE_PATHS_H

#include <filesystem>
#include <string>
#include <string_view>

namespace tarn::host {

// In place of a name: standard input or standard output.
inline constexpr std::string_view kStandardStream = "-";

// Never by way of a code page. Where paths are bytes, they are those of the text, UTF-8 or not.
inline std::filesystem::path PathFromUtf8(std::string_view text) {
  return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

inline std::string Utf8FromPath(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return std::string(text.begin(), text.end());
}

}  // namespace tarn::host

#endif
