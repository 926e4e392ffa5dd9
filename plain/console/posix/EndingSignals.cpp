// The handler writes the signal's number into a pipe, which is all that a handler may do here; a
// thread that waits at the other end does the work. Programs that are started meanwhile get neither
// the handler nor the pipe, and no blocked signals.
#include "EndingSignals.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <thread>

namespace tarn::host {
namespace {

int toThread = -1;  // the pipe's end for writing; set before any handler is

void TellThread(int signal) {
  const int errorBefore = errno;
  const auto number = static_cast<unsigned char>(signal);
  if (write(toThread, &number, 1) != 1) {
    // The pipe is full of such numbers: the thread knows.
  }
  errno = errorBefore;
}

[[noreturn]] void EndBy(int signal) {
  std::signal(signal, SIG_DFL);
  // This thread has all signals blocked; another takes it.
  kill(getpid(), signal);
  for (;;) pause();
}

void WaitForSignal(int fromHandler, void (*cleanUp)()) {
  unsigned char number = 0;
  ssize_t got = 0;
  do {
    got = read(fromHandler, &number, 1);
  } while (got < 0 && errno == EINTR);
  if (got != 1) return;
  cleanUp();
  EndBy(number);
}

bool StartThread(int fromHandler, void (*cleanUp)()) {
  // A new thread has the mask of the one that starts it.
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  bool started = true;
  try {
    std::thread(WaitForSignal, fromHandler, cleanUp).detach();
  } catch (const std::system_error&) {
    started = false;
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return started;
}

void HandleUnlessIgnored(int signal) {
  struct sigaction action = {};
  if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) return;
  action = {};
  action.sa_handler = TellThread;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  sigaction(signal, &action, nullptr);
}

}  // namespace

void WatchEndingSignals(void (*cleanUp)()) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return;
  if (!StartThread(ends[0], cleanUp)) {
    close(ends[0]);
    close(ends[1]);
    return;
  }
  // A handler must never wait.
  fcntl(ends[1], F_SETFL, O_NONBLOCK);
  toThread = ends[1];
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) HandleUnlessIgnored(signal);
}

void EndChildren() {
  namespace fs = std::filesystem;
  std::error_code error;
  for (fs::directory_iterator thread("/proc/self/task", error), end; !error && thread != end;
       thread.increment(error)) {
    std::ifstream children(thread->path() / "children");
    for (pid_t child = 0; children >> child;) {
      kill(child, SIGKILL);
      // Whoever started it may be the one to take its status.
      siginfo_t ended = {};
      while (waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT) != 0 &&
             errno == EINTR) {
      }
    }
  }
}

}  // namespace tarn::host
