#include "SystemFiles.h"

#include <windows.h>
// After the header that it builds on.
#include <bcrypt.h>

#include <algorithm>
#include <array>

#include "FileKinds.h"
#include "NativePath.h"
#include "Tarnbase/Kernel.h"
#include "Utf8.h"

namespace tarn::kernel {
namespace {

// What one call of the system is asked to move: servers and drivers refuse much larger pieces.
constexpr size_t kLargestTransfer = 16 << 20;

template <typename Byte>
ULONG StepOf(std::span<Byte> rest) {
  return static_cast<ULONG>(std::min(rest.size(), kLargestTransfer));
}

// The kernel locks nobody out: others may read, write, rename and delete what it has open.
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Made before its file is opened: an open file is then never lost for want of memory.
class NativeFile final : public OpenFile {
 public:
  NativeFile() = default;
  ~NativeFile() override {
    if (handle_ != INVALID_HANDLE_VALUE) ::CloseHandle(handle_);
  }

  // Once, before anything else. The system's last error tells more.
  bool Open(const std::u16string& path, DWORD access, DWORD creation, DWORD flags) {
    ::SetLastError(ERROR_INVALID_NAME);
    if (path.empty()) return false;
    handle_ = ::CreateFileW(AsNative(path), access, kShareAll, nullptr, creation,
                            FILE_ATTRIBUTE_NORMAL | flags, nullptr);
    if (handle_ == INVALID_HANDLE_VALUE) return false;
    const DWORD said = ::GetLastError();
    onDisk_ = IsDiskFile(handle_);
    ::SetLastError(said);
    return true;
  }

  HANDLE handle() const { return handle_; }
  bool onDisk() const { return onDisk_; }

  uint64_t Read(std::span<char> room) override {
    return MoveAll(room, [this](char* at, DWORD count, DWORD* moved) {
      return ::ReadFile(handle_, at, count, moved, nullptr);
    });
  }

  uint64_t Write(std::string_view bytes) override {
    return MoveAll(std::span(bytes), [this](const char* at, DWORD count, DWORD* moved) {
      return ::WriteFile(handle_, at, count, moved, nullptr);
    });
  }

  uint64_t Seek(int64_t offset, int32_t origin) override {
    static_assert(FILE_BEGIN == KERNEL_SEEK_START && FILE_CURRENT == KERNEL_SEEK_CURRENT &&
                  FILE_END == KERNEL_SEEK_END);
    if (origin < KERNEL_SEEK_START || origin > KERNEL_SEEK_END || !onDisk_) return UINT64_MAX;
    LARGE_INTEGER distance;
    LARGE_INTEGER position;
    distance.QuadPart = offset;
    const BOOL moved = ::SetFilePointerEx(handle_, distance, &position, static_cast<DWORD>(origin));
    return moved != 0 ? static_cast<uint64_t>(position.QuadPart) : UINT64_MAX;
  }

 private:
  // Goes on after short counts, up to the end of the file or an error; what a step moved before it
  // failed counts too.
  template <typename Byte, typename Step>
  static uint64_t MoveAll(std::span<Byte> bytes, Step step) {
    std::span<Byte> rest = bytes;
    while (!rest.empty()) {
      DWORD moved = 0;
      const bool whole = step(rest.data(), StepOf(rest), &moved) != 0;
      rest = rest.subspan(moved);
      if (!whole || moved == 0) break;
    }
    return bytes.size() - rest.size();
  }

  HANDLE handle_ = INVALID_HANDLE_VALUE;
  bool onDisk_ = false;  // asking others for a position is not defined
};

// A file for writing, made, or emptied once `wanted` has taken it. It is not opened so as to be
// emptied at once: that fails on hidden files and on those of the system. A file just made is empty
// already, so a new file never stays when emptying fails.
template <typename Predicate>
std::shared_ptr<OpenFile> OpenEmpty(const std::u16string& path, DWORD access, DWORD flags,
                                    Predicate wanted) {
  auto file = std::make_shared<NativeFile>();
  if (!file->Open(path, access, OPEN_ALWAYS, flags)) return nullptr;
  const bool existed = ::GetLastError() == ERROR_ALREADY_EXISTS;
  if (!wanted(file->handle())) return nullptr;
  const bool mayHoldBytes = existed && file->onDisk();
  return mayHoldBytes && ::SetEndOfFile(file->handle()) == 0 ? nullptr : file;
}

bool NothingOfThatName(DWORD error) {
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ||
         error == ERROR_INVALID_NAME || error == ERROR_BAD_PATHNAME || error == ERROR_DIRECTORY ||
         error == ERROR_FILENAME_EXCED_RANGE || error == ERROR_INVALID_DRIVE;
}

// A file that is marked read-only is deleted like any other; the mark stays when that fails.
bool RemoveReadOnly(const std::u16string& path) {
  const DWORD attributes = ::GetFileAttributesW(AsNative(path));
  constexpr DWORD kMark = FILE_ATTRIBUTE_READONLY;
  if (attributes == INVALID_FILE_ATTRIBUTES) return NothingOfThatName(::GetLastError());
  if ((attributes & kMark) == 0 || (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return false;
  if (::SetFileAttributesW(AsNative(path), WithoutReadOnlyMark(attributes)) == 0) return false;
  if (::DeleteFileW(AsNative(path)) != 0) return true;
  ::SetFileAttributesW(AsNative(path), attributes);
  return false;
}

}  // namespace

const char kPathSeparator = '\\';

// The system takes both separators, and refuses to open a directory as a file.
std::shared_ptr<OpenFile> OpenForReading(const std::string& path) {
  auto file = std::make_shared<NativeFile>();
  return file->Open(HostPath(path), GENERIC_READ, OPEN_EXISTING, 0) ? file : nullptr;
}

std::shared_ptr<OpenFile> OpenForWriting(const std::string& path) {
  return OpenEmpty(HostPath(path), GENERIC_WRITE, 0, [](HANDLE) { return true; });
}

std::shared_ptr<OpenFile> OpenTemporary(const TemporaryPlace& place) {
  // A link is opened itself instead of followed.
  return OpenEmpty(TemporaryPath(place.path), GENERIC_WRITE | FILE_READ_ATTRIBUTES,
                   FILE_FLAG_OPEN_REPARSE_POINT, IsPlainFile);
}

Creation MakeNewFile(const TemporaryPlace& place) {
  // Without the flag a link to nowhere would be followed and its target made.
  const std::u16string native = TemporaryPath(place.path);
  NativeFile file;
  if (file.Open(native, GENERIC_WRITE, CREATE_NEW, FILE_FLAG_OPEN_REPARSE_POINT)) {
    return file.onDisk() ? Creation::Made : Creation::Failed;
  }
  const DWORD error = ::GetLastError();
  const bool exists = error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS;
  return exists ? Creation::Exists : Creation::Failed;
}

bool RemoveFile(const TemporaryPlace& place) {
  const std::u16string native = TemporaryPath(place.path);
  if (native.empty()) return true;
  if (::DeleteFileW(AsNative(native)) != 0) return true;
  const DWORD error = ::GetLastError();
  return NothingOfThatName(error) || (error == ERROR_ACCESS_DENIED && RemoveReadOnly(native));
}

std::string ResolveDirectory(const std::string& path) {
  const std::string resolved = ToUtf8(FullPath(ToWide(path)));
  const std::u16string native = HostPath(resolved);
  if (native.empty()) return {};
  const DWORD attributes = ::GetFileAttributesW(AsNative(native));
  const bool exists = attributes != INVALID_FILE_ATTRIBUTES;
  return exists && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? resolved : std::string();
}

std::string SystemTempDirectory() {
  std::array<wchar_t, MAX_PATH + 2> path;
  const DWORD units = ::GetTempPathW(static_cast<DWORD>(path.size()), path.data());
  if (units == 0 || units >= path.size()) return {};
  return ToUtf8({AsText(path.data()), units});
}

bool RandomBytes(std::span<unsigned char> bytes) {
  while (!bytes.empty()) {
    const ULONG step = StepOf(bytes);
    const NTSTATUS status =
        ::BCryptGenRandom(nullptr, bytes.data(), step, BCRYPT_USE_SYSTEM_PREFERRED_RNG);
    if (status < 0) return false;
    bytes = bytes.subspan(step);
  }
  return true;
}

}  // namespace tarn::kernel
