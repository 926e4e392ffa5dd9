// A library for LD_PRELOAD that refuses memory.
//
// Counted are the calls for memory of the program's main thread and all others from the begin of
// its main(), of all processes that have the same file TARN_MEMORY_COUNTER, which holds the number
// of them so far. Call number TARN_MEMORY_AT gets none; 0 refuses nothing.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include <dlfcn.h>

// The C library's own, which it also has under these names.
extern "C" {
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void* __libc_memalign(size_t, size_t);
}

namespace {

using Count = std::atomic<uint64_t>;
using Main = int(int, char**, char**);

Count* count = nullptr;
uint64_t at = 0;
Main* realMain = nullptr;

bool IsRefused() {
  if (count == nullptr || count->fetch_add(1) + 1 != at) return false;
  errno = ENOMEM;
  return true;
}

void Begin() {
  const char* const counter = getenv("TARN_MEMORY_COUNTER");
  const char* const number = getenv("TARN_MEMORY_AT");
  if (counter == nullptr || number == nullptr) return;
  const int file = open(counter, O_RDWR | O_CLOEXEC);
  if (file < 0) abort();
  void* const room = mmap(nullptr, sizeof(Count), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  if (room == MAP_FAILED) abort();
  close(file);
  at = strtoull(number, nullptr, 10);
  count = static_cast<Count*>(room);
}

int CountedMain(int argc, char** argv, char** environment) {
  Begin();
  return realMain(argc, argv, environment);
}

}  // namespace

extern "C" {

int __libc_start_main(Main* program, int argc, char** argv, void (*begin)(), void (*end)(),
                      void (*unload)(), void* stack) {
  using Start = int(Main*, int, char**, void (*)(), void (*)(), void (*)(), void*);
  realMain = program;
  const auto start = reinterpret_cast<Start*>(dlsym(RTLD_NEXT, "__libc_start_main"));
  return start(CountedMain, argc, argv, begin, end, unload, stack);
}

void* malloc(size_t size) { return IsRefused() ? nullptr : __libc_malloc(size); }

void* calloc(size_t number, size_t size) {
  return IsRefused() ? nullptr : __libc_calloc(number, size);
}

void* realloc(void* block, size_t size) {
  return IsRefused() ? nullptr : __libc_realloc(block, size);
}

void* memalign(size_t alignment, size_t size) {
  return IsRefused() ? nullptr : __libc_memalign(alignment, size);
}

void* aligned_alloc(size_t alignment, size_t size) { return memalign(alignment, size); }

int posix_memalign(void** block, size_t alignment, size_t size) {
  if (IsRefused()) return ENOMEM;
  *block = __libc_memalign(alignment, size);
  return *block == nullptr ? ENOMEM : 0;
}

}  // extern "C"
