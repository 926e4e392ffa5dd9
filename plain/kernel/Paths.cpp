#include "Paths.h"

#include <algorithm>
#include <string_view>

#include "Utf8.h"

namespace tarn::kernel {
namespace {

// Calls `visit` with each component, empty ones included.
template <typename Visit>
void ForEachComponent(const std::string& path, Visit visit) {
  size_t start = 0;
  for (size_t i = 0; i <= path.size(); ++i) {
    if (i < path.size() && !IsSeparator(path[i])) continue;
    visit(std::string_view(path).substr(start, i - start));
    start = i + 1;
  }
}

}  // namespace

std::string PathFromWide(const char16_t* path) {
  return path == nullptr ? std::string() : ToUtf8(path, WideLength(path));
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

bool ClimbsUp(const std::string& path) {
  bool found = false;
  ForEachComponent(path, [&](std::string_view component) { found |= component == ".."; });
  return found;
}

std::string OneSpelling(const std::string& path) {
  std::string result;
  if (!path.empty() && IsSeparator(path.front())) result.push_back('/');
  ForEachComponent(path, [&](std::string_view component) {
    if (component.empty() || component == ".") return;
    if (!result.empty() && result.back() != '/') result.push_back('/');
    result.append(component);
  });
  return result;
}

}  // namespace tarn::kernel
