#include "archive/export/Beat.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>

#include "archive/export/HashedFile.h"

namespace tarn::archive {

Outcome<Beat> Beat::open(const std::filesystem::path& path) {
  using Count = std::atomic<uint64_t>;
  static_assert(Count::is_always_lock_free);
  const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
  if (file < 0) return SystemTrouble(path, errno);
  void* const room = ftruncate(file, sizeof(Count)) == 0
                         ? mmap(nullptr, sizeof(Count), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0)
                         : MAP_FAILED;
  const int error = errno;
  close(file);
  if (room == MAP_FAILED) return SystemTrouble(path, error);
  // A new file is zeros, and those are the number 0.
  return Beat(static_cast<Count*>(room));
}

Beat::~Beat() {
  if (count_ != nullptr) munmap(count_, sizeof *count_);
}

}  // namespace tarn::archive
