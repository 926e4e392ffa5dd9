#include "Paths.h"

#include <algorithm>

#include "Utf8.h"

namespace tarn::kernel {

std::string PathFromWide(const char16_t* path) {
  return path == nullptr ? std::string() : ToUtf8(path);
}

std::string WithSlashes(std::string path) {
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

std::string DirectoryOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return path.substr(0, std::max<size_t>(slash, 1));
}

std::string_view LastComponent(std::string_view path) {
  const size_t separator = path.find_last_of("/\\");
  return separator == std::string_view::npos ? path : path.substr(separator + 1);
}

}  // namespace tarn::kernel
