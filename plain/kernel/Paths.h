// Paths.h - what the kernel knows of paths: UTF-8 texts, taken apart by their separators only.
#ifndef TARN_KERNEL_PATHS_H
#define TARN_KERNEL_PATHS_H

#include <string>
#include <string_view>

namespace tarn::kernel {

constexpr bool IsSeparator(char c) { return c == '/' || c == '\\'; }

// The path as UTF-8; empty when it is null, empty, or no well-formed text.
std::string PathFromWide(const char16_t* path);

// With every "\" as "/".
std::string WithSlashes(std::string path);

// What is before the last "/" ("/" for a file of the root, "." without one).
std::string DirectoryOf(const std::string& path);

// What is after the last separator; the whole path without one.
std::string_view LastComponent(std::string_view path);

// Calls `visit` with each component, empty ones included.
template <typename Visit>
void ForEachComponent(std::string_view path, Visit visit) {
  size_t start = 0;
  for (size_t i = 0; i <= path.size(); ++i) {
    if (i < path.size() && !IsSeparator(path[i])) continue;
    visit(path.substr(start, i - start));
    start = i + 1;
  }
}

}  // namespace tarn::kernel

#endif
