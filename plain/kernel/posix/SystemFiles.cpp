#include "SystemFiles.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>

#include "ParentDirectory.h"
#include "Paths.h"
#include "Tarnbase/Kernel.h"
#include "Utf8.h"

namespace tarn::kernel {
namespace {

constexpr size_t kLargestTransfer = 0x40000000;  // what one call of the system is asked to move
constexpr mode_t kOwnerOnly = 0600;
constexpr mode_t kByUmask = 0666;

bool IsNoDirectory(const struct stat& status) { return !S_ISDIR(status.st_mode); }

// A second name of a file is a link too, and emptying it would empty whatever the first one names.
bool IsRegularAndNoLink(const struct stat& status) {
  return S_ISREG(status.st_mode) && status.st_nlink <= 1;
}

// Made before its file is opened: an open file is then never lost for want of memory.
class Descriptor final : public OpenFile {
 public:
  Descriptor() = default;
  ~Descriptor() override {
    if (descriptor_ >= 0) ::close(descriptor_);
  }

  // Until one of these succeeds, before anything else. errno tells more.
  bool Open(const std::string& path, int flags, mode_t mode) {
    return OpenAt(AT_FDCWD, path.c_str(), flags, mode);
  }
  bool OpenAt(int directory, const char* path, int flags, mode_t mode) {
    do {
      descriptor_ = ::openat(directory, path, flags | O_CLOEXEC | O_NOCTTY, mode);
    } while (descriptor_ < 0 && errno == EINTR);
    return descriptor_ >= 0;
  }

  // Whether it is of that kind.
  template <typename Predicate>
  bool Is(Predicate wanted) const {
    struct stat status = {};
    return ::fstat(descriptor_, &status) == 0 && wanted(status);
  }

  // A file that is empty, such as one just made, stays as it is: that cannot fail.
  bool Empty() const {
    struct stat status = {};
    if (::fstat(descriptor_, &status) == 0 && status.st_size == 0) return true;
    return ::ftruncate(descriptor_, 0) == 0;
  }

  uint64_t Read(std::span<char> room) override {
    return MoveAll(room, [this](std::span<char> rest) {
      return ::read(descriptor_, rest.data(), rest.size());
    });
  }

  uint64_t Write(std::string_view bytes) override {
    return MoveAll(std::span(bytes), [this](std::span<const char> rest) {
      return ::write(descriptor_, rest.data(), rest.size());
    });
  }

  uint64_t Seek(int64_t offset, int32_t origin) override {
    static_assert(SEEK_SET == KERNEL_SEEK_START && SEEK_CUR == KERNEL_SEEK_CURRENT &&
                  SEEK_END == KERNEL_SEEK_END);
    if (origin < KERNEL_SEEK_START || origin > KERNEL_SEEK_END) return UINT64_MAX;
    const off_t position = ::lseek(descriptor_, offset, origin);
    return position < 0 ? UINT64_MAX : static_cast<uint64_t>(position);
  }

 private:
  // Goes on after interruptions and short counts, up to the end of the file or an error.
  template <typename Byte, typename Step>
  static uint64_t MoveAll(std::span<Byte> bytes, Step step) {
    std::span<Byte> rest = bytes;
    while (!rest.empty()) {
      const ssize_t moved = step(rest.first(std::min(rest.size(), kLargestTransfer)));
      if (moved < 0 && errno == EINTR) continue;
      if (moved <= 0) break;
      rest = rest.subspan(static_cast<size_t>(moved));
    }
    return bytes.size() - rest.size();
  }

  int descriptor_ = -1;
};

// Names longer than the system allows cannot exist either.
bool NothingOfThatName(int error) {
  return error == ENOENT || error == ENOTDIR || error == ENAMETOOLONG;
}

bool DirectoryExists(const std::string& path) {
  struct stat status = {};
  return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

const char kPathSeparator = '/';

std::shared_ptr<OpenFile> OpenForReading(const std::string& path) {
  auto file = std::make_shared<Descriptor>();
  bool open = file->Open(path, O_RDONLY, 0);
  if (!open && NothingOfThatName(errno)) open = file->Open(WithSlashes(path), O_RDONLY, 0);
  return open && file->Is(IsNoDirectory) ? file : nullptr;
}

std::shared_ptr<OpenFile> OpenForWriting(const std::string& path) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC;
  auto file = std::make_shared<Descriptor>();
  bool open = file->Open(path, kFlags, kByUmask);
  if (!open && NothingOfThatName(errno) && !DirectoryExists(DirectoryOf(path))) {
    open = file->Open(WithSlashes(path), kFlags, kByUmask);
  }
  return open && file->Is(IsNoDirectory) ? file : nullptr;
}

std::shared_ptr<OpenFile> OpenTemporary(const TemporaryPlace& place) {
  // Emptied only once it is known to be a regular file; O_NONBLOCK keeps a pipe from waiting.
  constexpr int kFlags = O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK;
  auto file = std::make_shared<Descriptor>();
  const ParentDirectory parent(place);
  if (!parent.IsOpen()) return nullptr;
  if (!file->OpenAt(parent.descriptor(), parent.name(), kFlags, kOwnerOnly)) return nullptr;
  return file->Is(IsRegularAndNoLink) && file->Empty() ? file : nullptr;
}

Creation MakeNewFile(const TemporaryPlace& place) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL;
  const ParentDirectory parent(place);
  if (!parent.IsOpen()) return Creation::Failed;
  Descriptor file;
  if (file.OpenAt(parent.descriptor(), parent.name(), kFlags, kOwnerOnly)) return Creation::Made;
  return errno == EEXIST ? Creation::Exists : Creation::Failed;
}

bool RemoveFile(const TemporaryPlace& place) {
  const ParentDirectory parent(place);
  const bool removed = parent.IsOpen() && ::unlinkat(parent.descriptor(), parent.name(), 0) == 0;
  return removed || NothingOfThatName(errno);
}

std::string ResolveDirectory(const std::string& path) {
  char* const resolved = ::realpath(WithSlashes(path).c_str(), nullptr);
  if (resolved == nullptr) return {};
  const std::unique_ptr<char, decltype(&std::free)> owner(resolved, &std::free);
  return resolved;
}

std::string SystemTempDirectory() {
  const char* const named = std::getenv("TMPDIR");
  // A name that is no UTF-8 could not be handed to anyone as wide text.
  return named == nullptr || ToWide(named).empty() ? "/tmp" : named;
}

bool RandomBytes(std::span<unsigned char> bytes) {
  while (!bytes.empty()) {
    const ssize_t got = ::getrandom(bytes.data(), bytes.size(), 0);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    bytes = bytes.subspan(static_cast<size_t>(got));
  }
  return true;
}

}  // namespace tarn::kernel
