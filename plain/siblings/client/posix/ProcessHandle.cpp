#include "siblings/client/ProcessHandle.h"

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace tarn::pages {

// The C library's own header of these calls is not for C++ in every version.

Descriptor OpenProcess(ProcessId process) {
  return Descriptor(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
}

void KillProcess(const Descriptor& process) {
  if (process) (void)syscall(SYS_pidfd_send_signal, process.get(), SIGKILL, nullptr, 0);
}

bool WaitForProcess(const Descriptor& process, std::chrono::milliseconds limit) {
  pollfd entry = {process.get(), POLLIN, 0};
  int ready = 0;
  do {
    ready = poll(&entry, 1, static_cast<int>(limit.count()));
  } while (ready < 0 && errno == EINTR);
  return ready > 0;
}

}  // namespace tarn::pages
