#include "ParentDirectory.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "Paths.h"

namespace tarn::kernel {
namespace {

// The components that count: neither empty nor ".".
std::vector<std::string> Names(const std::string& path) {
  std::vector<std::string> names;
  ForEachComponent(path, [&names](std::string_view component) {
    if (!component.empty() && component != ".") names.emplace_back(component);
  });
  return names;
}

bool IsAbsolute(const std::string& path) { return IsSeparator(path.front()); }

// Whether the path goes through the directory as it is spelled; `names` are those of the path.
bool IsBelow(const std::string& path, const std::vector<std::string>& names,
             const std::string& directory, const std::vector<std::string>& directoryNames) {
  return !directory.empty() && IsAbsolute(path) == IsAbsolute(directory) &&
         names.size() > directoryNames.size() &&
         std::equal(directoryNames.begin(), directoryNames.end(), names.begin());
}

}  // namespace

ParentDirectory::ParentDirectory(const TemporaryPlace& file)
    : descriptor_(AT_FDCWD), name_(LastComponent(file.path)) {
  const std::vector<std::string> names = Names(file.path);
  const std::vector<std::string> trusted = Names(file.trusted);
  if (!IsBelow(file.path, names, file.trusted, trusted)) {
    Enter(DirectoryOf(WithSlashes(file.path)), 0);
    return;
  }
  Enter(WithSlashes(file.trusted), 0);
  for (size_t i = trusted.size(); i + 1 < names.size() && IsOpen(); ++i) {
    Enter(names[i], O_NOFOLLOW);
  }
}

ParentDirectory::~ParentDirectory() {
  if (IsOpen()) ::close(descriptor_);
}

// Goes on from the directory that is open to one in it.
void ParentDirectory::Enter(const std::string& directory, int flags) {
  const int former = descriptor_;
  do {
    descriptor_ = ::openat(former, directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC | flags);
  } while (descriptor_ < 0 && errno == EINTR);
  if (former < 0) return;
  const int error = errno;
  ::close(former);
  errno = error;
}

}  // namespace tarn::kernel
