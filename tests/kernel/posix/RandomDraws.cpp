#include "RandomDraws.h"

#include <sys/random.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cstring>

namespace {

std::atomic<int> zeroDraws{0};

}  // namespace

// Takes the place of the C library's, for the kernel too.
extern "C" __attribute__((visibility("default"))) ssize_t getrandom(void* buffer, size_t length,
                                                                    unsigned flags) {
  if (zeroDraws.load() > 0) {
    --zeroDraws;
    std::memset(buffer, 0, length);
    return static_cast<ssize_t>(length);
  }
  return static_cast<ssize_t>(::syscall(SYS_getrandom, buffer, length, flags));
}

namespace tarn::test {

void GiveZeros(int draws) { zeroDraws = draws; }
int ZeroDrawsLeft() { return zeroDraws; }

}  // namespace tarn::test
