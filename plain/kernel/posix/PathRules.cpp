#include "PathRules.h"

#include "Paths.h"

namespace tarn::kernel {

bool ClimbsUp(const std::string& path) {
  bool found = false;
  ForEachComponent(path, [&](std::string_view component) { found |= component == ".."; });
  return found;
}

bool MayHoldTemporaries(const std::string& directory) {
  return !directory.empty() && !ClimbsUp(directory);
}

bool MayNameTemporary(const std::string& path) {
  const std::string_view last = LastComponent(path);
  return MayHoldTemporaries(path) && !last.empty() && last != ".";
}

std::string SpellingForOthers(const std::string& path) { return path; }

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
