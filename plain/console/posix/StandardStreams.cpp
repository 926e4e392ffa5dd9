#include "StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "WriteAll.h"

namespace tarn::host {

void PrepareStandardStreams() {
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    if (fcntl(descriptor, F_GETFD) >= 0 || errno != EBADF) continue;
    // Takes the lowest free number, which is this one. Its use fails as if it were closed.
    const int unusable = descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY;
    if (open("/dev/null", unusable | O_NOCTTY) < 0) return;
  }
  std::signal(SIGPIPE, SIG_IGN);
  // Beyond a limit on the size of files a write fails, as on a full disk.
  std::signal(SIGXFSZ, SIG_IGN);
}

bool StandardOutputIsTerminal() { return isatty(STDOUT_FILENO) != 0; }

bool StandardErrorIsTerminal() { return isatty(STDERR_FILENO) != 0; }

std::error_code WriteStandardOutput(std::string_view bytes) {
  return WriteAll(STDOUT_FILENO, bytes);
}

void WriteStandardError(std::string_view bytes) { (void)WriteAll(STDERR_FILENO, bytes); }

}  // namespace tarn::host
