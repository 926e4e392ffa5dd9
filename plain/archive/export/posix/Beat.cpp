#include "archive/export/Beat.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "archive/export/HashedFile.h"
#include "console/posix/WriteAll.h"

namespace tarn::archive {

Outcome<Beat> Beat::open(const std::filesystem::path& path) {
  using Count = std::atomic<uint64_t>;
  static_assert(Count::is_always_lock_free);
  const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
  if (file < 0) return SystemTrouble(path, errno);
  // Bytes that are there have their room on the disk, and no store to them can find it full. Zeros
  // are the number 0.
  constexpr char kZeros[sizeof(Count)] = {};
  struct stat facts = {};
  std::error_code error;
  if (fstat(file, &facts) != 0) error.assign(errno, std::generic_category());
  if (!error && facts.st_size == 0) error = host::WriteAll(file, {kZeros, sizeof kZeros});
  void* room = MAP_FAILED;
  if (!error) {
    room = mmap(nullptr, sizeof(Count), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (room == MAP_FAILED) error.assign(errno, std::generic_category());
  }
  close(file);
  if (error) return SystemTrouble(path, error.value());
  return Beat(static_cast<Count*>(room));
}

Beat::~Beat() {
  if (count_ != nullptr) munmap(count_, sizeof *count_);
}

}  // namespace tarn::archive
