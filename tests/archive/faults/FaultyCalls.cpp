// A library for LD_PRELOAD that lets calls of the system fail, or ends the program at one.
//
// Counted are calls that concern what is below TARN_FAULT_FOLDER, of all processes that have the
// same file TARN_FAULT_COUNTER, which holds the number of them so far. At number TARN_FAULT_AT,
// TARN_FAULT_KIND happens:
//   kill   every process of the run is killed, half of what was to be written is
//   full   half of what was to be written is, and from then on nothing takes any room
//   once   that call alone fails for want of room
//   term, int   every process of the run gets SIGTERM or SIGINT, as from Ctrl-C, before the change
//   read   that read alone fails; reads are counted then, and nothing else
//   count  nothing
// The first process of a run begins a process group of its own.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

using Count = std::atomic<uint64_t>;

enum class Kind { None, Kill, Full, Once, Read, Signal };

struct Plan {
  Kind kind = Kind::None;
  uint64_t at = 0;
  int signal = 0;  // of Kind::Signal
  char folder[4096] = {};
  Count* count = nullptr;
};

template <typename Function>
Function* Real(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

Plan ReadPlan() {
  Plan plan;
  const char* const folder = getenv("TARN_FAULT_FOLDER");
  const char* const counter = getenv("TARN_FAULT_COUNTER");
  const char* const kind = getenv("TARN_FAULT_KIND");
  const char* const at = getenv("TARN_FAULT_AT");
  if (!folder || !counter || !kind || !at || strlen(folder) >= sizeof plan.folder) return plan;
  const int file = Real<int(const char*, int, ...)>("open")(counter, O_RDWR | O_CLOEXEC);
  if (file < 0) abort();
  void* const room = mmap(nullptr, sizeof(Count), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  if (room == MAP_FAILED) abort();
  close(file);
  plan.count = static_cast<Count*>(room);
  strcpy(plan.folder, folder);
  plan.at = strtoull(at, nullptr, 10);
  if (strcmp(kind, "kill") == 0) plan.kind = Kind::Kill;
  if (strcmp(kind, "full") == 0) plan.kind = Kind::Full;
  if (strcmp(kind, "once") == 0) plan.kind = Kind::Once;
  if (strcmp(kind, "read") == 0) plan.kind = Kind::Read;
  if (strcmp(kind, "term") == 0) plan.signal = SIGTERM;
  if (strcmp(kind, "int") == 0) plan.signal = SIGINT;
  if (plan.signal != 0) plan.kind = Kind::Signal;
  // Those that it starts stay in its group.
  if (getenv("TARN_FAULT_GROUP") == nullptr) {
    setpgid(0, 0);
    setenv("TARN_FAULT_GROUP", "made", 1);
  }
  return plan;
}

const Plan& ThePlan() {
  static const Plan plan = ReadPlan();
  return plan;
}

__attribute__((constructor)) void Prepare() { (void)ThePlan(); }

bool IsBelow(const char* path) {
  const Plan& plan = ThePlan();
  if (plan.count == nullptr || path == nullptr) return false;
  const size_t length = strlen(plan.folder);
  return strncmp(path, plan.folder, length) == 0 && (path[length] == '/' || path[length] == '\0');
}

bool IsBelow(int descriptor) {
  if (ThePlan().count == nullptr) return false;
  const int error = errno;
  char link[64];
  char path[4096];
  snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
  const ssize_t length = readlink(link, path, sizeof path - 1);
  errno = error;
  if (length < 0) return false;
  path[length] = '\0';
  return IsBelow(path);
}

enum class Fate { Done, Half, NoRoom };

// What becomes of a change; `takesRoom` where a full disk may refuse it.
Fate Meet(bool takesRoom) {
  const Plan& plan = ThePlan();
  if (plan.kind == Kind::Read) return Fate::Done;
  if ((plan.kind == Kind::Full || plan.kind == Kind::Once) && !takesRoom) return Fate::Done;
  const uint64_t number = plan.count->fetch_add(1) + 1;
  if (plan.at == 0 || number < plan.at) return Fate::Done;
  if (plan.kind == Kind::Signal && number == plan.at) kill(0, plan.signal);
  if (plan.kind == Kind::Kill) return number == plan.at ? Fate::Half : Fate::NoRoom;
  if (plan.kind == Kind::Full) return number == plan.at ? Fate::Half : Fate::NoRoom;
  return plan.kind == Kind::Once && number == plan.at ? Fate::NoRoom : Fate::Done;
}

// Nothing comes after this where all is to be killed.
void KillWhereAsked() {
  if (ThePlan().kind != Kind::Kill) return;
  kill(0, SIGKILL);
  for (;;) pause();
}

// Whether a change without bytes of its own is to be refused.
bool Refuses(bool takesRoom) {
  const Fate fate = Meet(takesRoom);
  if (fate == Fate::Done) return false;
  KillWhereAsked();
  errno = ENOSPC;
  return true;
}

// Writes by `write(count)` what the fate leaves of `size` bytes.
template <typename Write>
ssize_t WriteByFate(size_t size, const Write& write) {
  const Fate fate = Meet(true);
  if (fate == Fate::Done) return write(size);
  if (fate == Fate::Half && size > 1) {
    const ssize_t written = write(size / 2);
    KillWhereAsked();
    return written;
  }
  KillWhereAsked();
  errno = ENOSPC;
  return -1;
}

// Whether this read is the one that fails.
bool FailsToRead(int descriptor) {
  const Plan& plan = ThePlan();
  if (plan.kind != Kind::Read || !IsBelow(descriptor)) return false;
  if (plan.count->fetch_add(1) + 1 != plan.at) return false;
  errno = EIO;
  return true;
}

// Of open: whether a file is made or emptied.
bool Changes(const char* path, int flags) {
  if (!IsBelow(path)) return false;
  const int error = errno;
  const bool isThere = access(path, F_OK) == 0;
  errno = error;
  return (flags & O_TRUNC) != 0 || ((flags & O_CREAT) != 0 && !isThere);
}

template <typename Offset>
using WriteAt = ssize_t(int, const void*, size_t, Offset);
template <typename Offset>
using ReadAt = ssize_t(int, void*, size_t, Offset);

}  // namespace

extern "C" {

#define OPEN(NAME)                                                         \
  int NAME(const char* path, int flags, ...) {                             \
    va_list more;                                                          \
    va_start(more, flags);                                                 \
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0; \
    va_end(more);                                                          \
    if (Changes(path, flags) && Refuses(true)) return -1;                  \
    return Real<int(const char*, int, ...)>(#NAME)(path, flags, mode);     \
  }
OPEN(open)
OPEN(open64)
#undef OPEN

#define PATH_CALL(NAME, TAKES_ROOM, PARAMETERS, ARGUMENTS) \
  int NAME PARAMETERS {                                    \
    if (IsBelow(path) && Refuses(TAKES_ROOM)) return -1;   \
    return Real<int PARAMETERS>(#NAME) ARGUMENTS;          \
  }
PATH_CALL(mkdir, true, (const char* path, mode_t mode), (path, mode))
PATH_CALL(rename, true, (const char* from, const char* path), (from, path))
PATH_CALL(link, true, (const char* from, const char* path), (from, path))
PATH_CALL(unlink, false, (const char* path), (path))
PATH_CALL(remove, false, (const char* path), (path))
PATH_CALL(rmdir, false, (const char* path), (path))
#undef PATH_CALL

int unlinkat(int folder, const char* path, int flags) {
  if ((IsBelow(path) || IsBelow(folder)) && Refuses(false)) return -1;
  return Real<int(int, const char*, int)>("unlinkat")(folder, path, flags);
}

#define FILE_CALL(NAME, TAKES_ROOM, PARAMETERS, ARGUMENTS) \
  int NAME PARAMETERS {                                    \
    if (IsBelow(file) && Refuses(TAKES_ROOM)) return -1;   \
    return Real<int PARAMETERS>(#NAME) ARGUMENTS;          \
  }
FILE_CALL(fsync, false, (int file), (file))
FILE_CALL(fdatasync, false, (int file), (file))
FILE_CALL(syncfs, false, (int file), (file))
FILE_CALL(ftruncate, true, (int file, off_t size), (file, size))
FILE_CALL(ftruncate64, true, (int file, off64_t size), (file, size))
#undef FILE_CALL

ssize_t write(int file, const void* bytes, size_t size) {
  const auto real = Real<ssize_t(int, const void*, size_t)>("write");
  if (!IsBelow(file)) return real(file, bytes, size);
  return WriteByFate(size, [&](size_t count) { return real(file, bytes, count); });
}

ssize_t pwrite(int file, const void* bytes, size_t size, off_t offset) {
  const auto real = Real<WriteAt<off_t>>("pwrite");
  if (!IsBelow(file)) return real(file, bytes, size, offset);
  return WriteByFate(size, [&](size_t count) { return real(file, bytes, count, offset); });
}

ssize_t pwrite64(int file, const void* bytes, size_t size, off64_t offset) {
  const auto real = Real<WriteAt<off64_t>>("pwrite64");
  if (!IsBelow(file)) return real(file, bytes, size, offset);
  return WriteByFate(size, [&](size_t count) { return real(file, bytes, count, offset); });
}

ssize_t writev(int file, const iovec* parts, int count) {
  if (IsBelow(file) && Refuses(true)) return -1;
  return Real<ssize_t(int, const iovec*, int)>("writev")(file, parts, count);
}

ssize_t read(int file, void* bytes, size_t size) {
  if (FailsToRead(file)) return -1;
  return Real<ssize_t(int, void*, size_t)>("read")(file, bytes, size);
}

ssize_t readv(int file, const iovec* parts, int count) {
  if (FailsToRead(file)) return -1;
  return Real<ssize_t(int, const iovec*, int)>("readv")(file, parts, count);
}

ssize_t pread(int file, void* bytes, size_t size, off_t offset) {
  if (FailsToRead(file)) return -1;
  return Real<ReadAt<off_t>>("pread")(file, bytes, size, offset);
}

ssize_t pread64(int file, void* bytes, size_t size, off64_t offset) {
  if (FailsToRead(file)) return -1;
  return Real<ReadAt<off64_t>>("pread64")(file, bytes, size, offset);
}

// What callers of a library with checks of lengths call instead.
ssize_t __read_chk(int file, void* bytes, size_t size, size_t) { return read(file, bytes, size); }
ssize_t __pread_chk(int file, void* bytes, size_t size, off_t offset, size_t) {
  return pread(file, bytes, size, offset);
}
ssize_t __pread64_chk(int file, void* bytes, size_t size, off64_t offset, size_t) {
  return pread64(file, bytes, size, offset);
}

// The C library reads for these by calls of its own: a folder in the file's place cannot be read,
// and the file is there again afterwards.
size_t fread(void* bytes, size_t size, size_t count, FILE* file) {
  const auto real = Real<size_t(void*, size_t, size_t, FILE*)>("fread");
  const int descriptor = fileno(file);
  if (!FailsToRead(descriptor)) return real(bytes, size, count, file);
  const int kept = dup(descriptor);
  const int folder = Real<int(const char*, int, ...)>("open")("/", O_RDONLY | O_DIRECTORY);
  dup2(folder, descriptor);
  const size_t got = real(bytes, size, count, file);
  dup2(kept, descriptor);
  close(kept);
  close(folder);
  return got;
}

}  // extern "C"
