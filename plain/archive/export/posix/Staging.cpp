#include "archive/export/Staging.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

namespace tarn::archive {

Outcome<std::optional<int>> LockFile(const std::filesystem::path& path) {
  const int file = open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
  if (file < 0) return SystemTrouble(path, errno);
  if (flock(file, LOCK_EX | LOCK_NB) == 0) return std::optional(file);
  const int error = errno;
  // A file system without locks, as clusters have some.
  if (error == ENOLCK || error == ENOSYS || error == EOPNOTSUPP) return std::optional(file);
  close(file);
  if (error != EWOULDBLOCK) return SystemTrouble(path, error);
  return std::optional<int>();
}

void UnlockFile(int file) { close(file); }

std::optional<Trouble> SyncFileSystem(const std::filesystem::path& path) {
  const int folder = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) return SystemTrouble(path, errno);
  std::optional<Trouble> trouble;
  if (syncfs(folder) != 0 && errno != ENOSYS) trouble = SystemTrouble(path, errno);
  close(folder);
  return trouble;
}

}  // namespace tarn::archive
