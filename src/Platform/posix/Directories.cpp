#include "Platform/Directories.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <span>
#include <string_view>

#include "Platform/CodePages.h"

namespace tarn::platform {
namespace {

// A path in the form of the system calls: UTF-8, separated by "/", NUL-terminated, and without what
// would make them follow a link in the last component: separators and periods at the end. Empty
// when the given path is null, empty or too long.
class SystemPath {
 public:
  explicit SystemPath(const char16_t* path) noexcept {
    if (path == nullptr) return;
    const std::u16string_view text(path);
    if (text.size() >= bytes_.size()) return;
    const std::span<char> room(bytes_.data(), bytes_.size() - 1);
    const size_t length = Utf16ToBytes(kCodePageUtf8, text, room).size;
    const std::span<char> written = room.first(length);
    std::replace(written.begin(), written.end(), '\\', '/');
    bytes_[NamesEnd(length)] = '\0';
  }

  bool IsEmpty() const noexcept { return bytes_[0] == '\0'; }
  const char* Get() const noexcept { return bytes_.data(); }

 private:
  // The root keeps its one separator.
  size_t NamesEnd(size_t length) const noexcept {
    const std::string_view path(bytes_.data(), length);
    while (length > 1) {
      const std::string_view rest = path.substr(0, length);
      if (!rest.ends_with('/') && !rest.ends_with("/.")) break;
      --length;
    }
    return length;
  }

  std::array<char, PATH_MAX> bytes_{};
};

constexpr mode_t kOnlyTheUser = 0700;

// A directory that nobody else can have put anything into, or may. No link to one either: whoever
// made the link may let it lead elsewhere later.
bool IsOursAlone(const char* path) noexcept {
  constexpr mode_t kOthersWrite = S_IWGRP | S_IWOTH;
  struct stat status = {};
  return lstat(path, &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid() &&
         (status.st_mode & kOthersWrite) == 0;
}

}  // namespace

DirectoryStatus MakeDirectory(const char16_t* path) noexcept {
  const SystemPath systemPath(path);
  if (systemPath.IsEmpty()) return DirectoryStatus::Failed;
  if (mkdir(systemPath.Get(), kOnlyTheUser) == 0) return DirectoryStatus::Created;
  if (errno != EEXIST || !IsOursAlone(systemPath.Get())) return DirectoryStatus::Failed;
  return DirectoryStatus::AlreadyExisted;
}

bool RemoveEmptyDirectory(const char16_t* path) noexcept {
  const SystemPath systemPath(path);
  return !systemPath.IsEmpty() && rmdir(systemPath.Get()) == 0;
}

}  // namespace tarn::platform
