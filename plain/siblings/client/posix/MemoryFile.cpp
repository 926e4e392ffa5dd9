#include "siblings/client/MemoryFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace tarn::pages {
namespace {

[[noreturn]] void Refuse(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// Four pages of A4 at 96 dpi.
constexpr uint64_t kKeptRoom = uint64_t{16} << 20;

// Nobody has mapped the file to write to it, so that what is forbidden from now on is all there is.
// F_SEAL_WRITE fails while the system itself holds one of its pages (EBUSY).
void Seal(const Descriptor& file) {
  constexpr int kSeals = F_SEAL_FUTURE_WRITE | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL;
  if (fcntl(file.get(), F_ADD_SEALS, kSeals) != 0) Refuse("seals");
}

}  // namespace

Descriptor MakeMemoryFile() {
  Descriptor file(memfd_create("pages", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  if (!file) Refuse("memfd_create");
  return file;
}

Descriptor SealedCopy(std::string_view bytes) {
  Descriptor file = MakeMemoryFile();
  if (!WriteAll(file.get(), bytes)) Refuse("write");
  Seal(file);
  return file;
}

std::optional<CopiedFile> SealedCopyOf(int file, uint64_t most) {
  CopiedFile copy = {MakeMemoryFile(), 0};
  std::array<char, 65'536> room;
  for (;;) {
    const ssize_t got = read(file, room.data(), room.size());
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return std::nullopt;
    if (got == 0) break;
    copy.size += static_cast<uint64_t>(got);
    if (copy.size > most) return std::nullopt;
    if (!WriteAll(copy.file.get(), {room.data(), static_cast<size_t>(got)})) Refuse("write");
  }
  Seal(copy.file);
  return copy;
}

bool ReadAll(int file, std::span<uint8_t> room) {
  off_t position = 0;
  while (!room.empty()) {
    const ssize_t got = pread(file, room.data(), room.size(), position);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    position += got;
    room = room.subspan(static_cast<size_t>(got));
  }
  return true;
}

bool WriteAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(file, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

std::optional<uint64_t> SizeOf(int file) {
  struct stat status = {};
  if (fstat(file, &status) != 0 || status.st_size < 0) return std::nullopt;
  return static_cast<uint64_t>(status.st_size);
}

int AnswerRoom::ready() {
  if (!file_) file_ = MakeMemoryFile();
  if (size() > kKeptRoom && ftruncate(file_.get(), 0) != 0) Refuse("ftruncate");
  if (lseek(file_.get(), 0, SEEK_SET) != 0) Refuse("lseek");
  return file_.get();
}

bool AnswerRoom::take(std::span<uint8_t> bytes) {
  const bool isWhole = ReadAll(file_.get(), bytes);
  if (bytes.size() > kKeptRoom && ftruncate(file_.get(), 0) != 0) Refuse("ftruncate");
  return isWhole;
}

}  // namespace tarn::pages
