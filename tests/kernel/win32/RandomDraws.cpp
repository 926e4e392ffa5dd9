#include "RandomDraws.h"

#include <windows.h>
// After the header that it builds on.
#include <bcrypt.h>

#include <atomic>
#include <cstring>

#include "KernelImports.h"

namespace {

std::atomic<int> zeroDraws{0};

NTSTATUS WINAPI Draw(BCRYPT_ALG_HANDLE algorithm, PUCHAR buffer, ULONG length, ULONG flags) {
  if (zeroDraws.load() > 0) {
    --zeroDraws;
    std::memset(buffer, 0, length);
    return 0;
  }
  return ::BCryptGenRandom(algorithm, buffer, length, flags);
}

}  // namespace

namespace tarn::test {

void GiveZeros(int draws) {
  static const ImportStandIn standIn("BCryptGenRandom", &Draw);
  zeroDraws = draws;
}

int ZeroDrawsLeft() { return zeroDraws; }

}  // namespace tarn::test
