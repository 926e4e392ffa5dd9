#include <malloc.h>
#include <sys/prctl.h>
#include <sys/resource.h>

#include <csignal>

#include "archive/export/Worker.h"

namespace tarn::archive {

void PrepareWorker([[maybe_unused]] unsigned long long memory) {
  // Whoever ended before this call has closed the channel, which ends the worker too.
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  std::signal(SIGXFSZ, SIG_IGN);
  // Whoever ends all processes of a job means the one that started this one: it decides what comes
  // of the item.
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, SIG_IGN);
  // What one item has freed the next one takes: without this the heap asks the system for it again.
  constexpr int kKeptBytes = 16 << 20;
  constexpr int kLargestOfHeap = 4 << 20;
  mallopt(M_TRIM_THRESHOLD, kKeptBytes);
  mallopt(M_MMAP_THRESHOLD, kLargestOfHeap);
  const rlimit noCore = {0, 0};
  setrlimit(RLIMIT_CORE, &noCore);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__clang__)
  // Sanitizers reserve more addresses than any limit; they have one of their own.
  const rlimit addresses = {memory, memory};
  setrlimit(RLIMIT_AS, &addresses);
#endif
}

}  // namespace tarn::archive
