#include "archive/export/HashedFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>
#include <vector>

#include "console/Paths.h"
#include "console/SystemErrors.h"
#include "console/posix/WriteAll.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;

constexpr size_t kPiece = size_t{256} << 10;

std::optional<Trouble> WriteTo(int file, std::string_view bytes, const fs::path& path) {
  const std::error_code error = host::WriteAll(file, bytes);
  if (error) return SystemTrouble(path, error.value());
  return std::nullopt;
}

}  // namespace

Trouble SystemTrouble(const fs::path& path, int error) {
  const std::error_code code(error, std::generic_category());
  const TroubleKind kind = error == ENOENT ? TroubleKind::Missing : TroubleKind::Unreadable;
  return {kind, host::Utf8FromPath(path) + ": " + host::ErrorText(code)};
}

Outcome<std::unique_ptr<HashedFile>> HashedFile::create(const fs::path& path) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
  if (file < 0) return SystemTrouble(path, errno);
  return std::unique_ptr<HashedFile>(new HashedFile(path, file));
}

HashedFile::~HashedFile() {
  if (file_ >= 0) ::close(file_);
}

std::optional<Trouble> HashedFile::write(std::string_view bytes) {
  bytes_ += bytes.size();
  if (waiting_.size() + bytes.size() > kPiece) {
    if (std::optional<Trouble> trouble = flush()) return trouble;
    if (bytes.size() > kPiece) {
      sum_.add(bytes);
      return WriteTo(file_, bytes, path_);
    }
  }
  waiting_ += bytes;
  return std::nullopt;
}

std::optional<Trouble> HashedFile::flush() {
  sum_.add(waiting_);
  std::optional<Trouble> trouble = WriteTo(file_, waiting_, path_);
  waiting_.clear();
  return trouble;
}

Outcome<FileSum> HashedFile::finish() {
  if (const std::optional<Trouble> trouble = flush()) return *trouble;
  if (::close(std::exchange(file_, -1)) != 0) return SystemTrouble(path_, errno);
  return FileSum{bytes_, sum_.digest()};
}

Outcome<std::unique_ptr<GrowingFile>> GrowingFile::open(const fs::path& path) {
  const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0666);
  if (file < 0) return SystemTrouble(path, errno);
  const off_t end = lseek(file, 0, SEEK_END);
  return std::unique_ptr<GrowingFile>(
      new GrowingFile(path, file, static_cast<uint64_t>(std::max<off_t>(end, 0))));
}

GrowingFile::~GrowingFile() { ::close(file_); }

std::optional<Trouble> GrowingFile::append(std::string_view bytes) {
  std::optional<Trouble> trouble = WriteTo(file_, bytes, path_);
  if (!trouble) size_ += bytes.size();
  return trouble;
}

std::optional<Trouble> GrowingFile::cutTo(uint64_t size) {
  const auto end = static_cast<off_t>(size);
  if (ftruncate(file_, end) != 0 || lseek(file_, end, SEEK_SET) != end) {
    return SystemTrouble(path_, errno);
  }
  size_ = size;
  return std::nullopt;
}

std::optional<Trouble> GrowingFile::sync() {
  if (fdatasync(file_) != 0) return SystemTrouble(path_, errno);
  return std::nullopt;
}

Outcome<std::string> GrowingFile::read(uint64_t offset, uint64_t count) const {
  std::string bytes(count, '\0');
  const std::optional<Trouble> trouble = read(offset, std::span<char>(bytes));
  if (trouble) return *trouble;
  return bytes;
}

std::optional<Trouble> GrowingFile::read(uint64_t offset, std::span<char> room) const {
  while (!room.empty()) {
    const ssize_t got = pread(file_, room.data(), room.size(), static_cast<off_t>(offset));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return SystemTrouble(path_, got < 0 ? errno : EIO);
    offset += static_cast<uint64_t>(got);
    room = room.subspan(static_cast<size_t>(got));
  }
  return std::nullopt;
}

std::optional<Trouble> GrowingFile::readInPieces(
    uint64_t offset, uint64_t count,
    const std::function<std::optional<Trouble>(std::string_view)>& take) const {
  for (uint64_t done = 0; done < count;) {
    const Outcome<std::string> piece =
        read(offset + done, std::min<uint64_t>(kPiece, count - done));
    if (!piece) return piece.trouble();
    if (std::optional<Trouble> trouble = take(*piece)) return trouble;
    done += piece->size();
  }
  return std::nullopt;
}

std::optional<Trouble> ReadInPieces(const fs::path& path,
                                    const std::function<bool(std::string_view)>& take) {
  // Does not wait for somebody who writes to a pipe.
  const int file = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) return SystemTrouble(path, errno);
  std::optional<Trouble> trouble;
  struct stat facts = {};
  if (fstat(file, &facts) != 0 || !S_ISREG(facts.st_mode)) {
    trouble = Trouble{TroubleKind::Unreadable, host::Utf8FromPath(path) + ": is no regular file"};
  }
  // Of a small file all, and one byte more, which tells that it ends there. Files of the kernel say
  // that they are empty, and are not.
  constexpr size_t kLeast = 4096;
  const auto size = static_cast<size_t>(std::max<off_t>(facts.st_size, 0));
  const size_t room = std::clamp(size + 1, kLeast, size_t{kPiece});
  std::vector<char> piece(trouble ? 0 : room);
  while (!trouble) {
    const ssize_t got = ::read(file, piece.data(), piece.size());
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) trouble = SystemTrouble(path, errno);
    if (got <= 0 || !take({piece.data(), static_cast<size_t>(got)})) break;
  }
  ::close(file);
  return trouble;
}

bool IsInMemory(const fs::path& path) {
  constexpr uint64_t kPlaces = 32;
  const int file = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) return false;
  struct stat facts = {};
  const bool isFile = fstat(file, &facts) == 0 && S_ISREG(facts.st_mode) && facts.st_size > 0;
  const auto size = isFile ? static_cast<uint64_t>(facts.st_size) : 0;
  void* const begin = isFile ? mmap(nullptr, size, PROT_READ, MAP_SHARED, file, 0) : MAP_FAILED;
  ::close(file);
  if (begin == MAP_FAILED) return false;
  const auto page = static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
  const uint64_t pages = (size + page - 1) / page;
  bool isThere = true;
  for (uint64_t place = 0; place < kPlaces && isThere; ++place) {
    unsigned char state = 0;
    char* const at = static_cast<char*>(begin) + pages * place / kPlaces * page;
    isThere = mincore(at, 1, &state) == 0 && (state & 1) != 0;
  }
  munmap(begin, size);
  return isThere;
}

Outcome<FileSum> SumOfFile(const fs::path& path) {
  FileSum sum;
  Sha256 running;
  const std::optional<Trouble> trouble = ReadInPieces(path, [&](std::string_view piece) {
    running.add(piece);
    sum.bytes += piece.size();
    return true;
  });
  if (trouble) return *trouble;
  sum.sha256 = running.digest();
  return sum;
}

}  // namespace tarn::archive
