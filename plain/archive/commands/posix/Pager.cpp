#include "archive/commands/Pager.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string>

#include "console/posix/WriteAll.h"

namespace tarn::archive {
namespace {

// What the shell ends with for a command that there is not, or that cannot be run.
constexpr int kNotFound = 127;
constexpr int kNotRun = 126;

// The pager is the one to decide on Ctrl-C while it runs.
class SignalsLeftToPager {
 public:
  SignalsLeftToPager()
      : interrupt_(std::signal(SIGINT, SIG_IGN)), quit_(std::signal(SIGQUIT, SIG_IGN)) {}
  SignalsLeftToPager(const SignalsLeftToPager&) = delete;
  SignalsLeftToPager& operator=(const SignalsLeftToPager&) = delete;
  ~SignalsLeftToPager() {
    std::signal(SIGINT, interrupt_);
    std::signal(SIGQUIT, quit_);
  }

 private:
  void (*interrupt_)(int);
  void (*quit_)(int);
};

bool Start(std::string command, int input, pid_t& child) {
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
  posix_spawn_file_actions_init(&actions);
  posix_spawnattr_init(&attributes);
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  sigset_t usual;
  sigemptyset(&usual);
  for (const int signal : {SIGPIPE, SIGXFSZ, SIGINT, SIGQUIT}) sigaddset(&usual, signal);
  posix_spawnattr_setsigdefault(&attributes, &usual);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
  std::string shell = "sh";
  std::string option = "-c";
  char* const words[] = {shell.data(), option.data(), command.data(), nullptr};
  const int error = posix_spawn(&child, "/bin/sh", &actions, &attributes, words, environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  return error == 0;
}

}  // namespace

bool ShowThroughPager(std::string_view text) {
  const char* const wanted = std::getenv("PAGER");
  const std::string command = wanted == nullptr ? "less" : wanted;
  if (command.empty() || command == "cat") return false;
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return false;
  const SignalsLeftToPager left;
  pid_t child = 0;
  const bool started = Start(command, ends[0], child);
  close(ends[0]);
  // Whoever has seen enough closes the other end.
  if (started) (void)host::WriteAll(ends[1], text);
  close(ends[1]);
  if (!started) return false;
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  const bool isMissing =
      WIFEXITED(status) && (WEXITSTATUS(status) == kNotFound || WEXITSTATUS(status) == kNotRun);
  return !isMissing;
}

}  // namespace tarn::archive
