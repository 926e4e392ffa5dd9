#include "MeasuredProcess.h"

#include <fcntl.h>
#include <linux/perf_event.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <stdexcept>

namespace tarn::bench {
namespace {

// Counts what the process and its children do from its exec on; -1 where that cannot be counted.
int OpenInstructionCounter(pid_t process) {
  perf_event_attr attributes = {};
  attributes.size = sizeof attributes;
  attributes.type = PERF_TYPE_HARDWARE;
  attributes.config = PERF_COUNT_HW_INSTRUCTIONS;
  attributes.disabled = 1;
  attributes.inherit = 1;
  attributes.enable_on_exec = 1;
  attributes.exclude_kernel = 1;
  return static_cast<int>(
      syscall(SYS_perf_event_open, &attributes, process, -1, -1, PERF_FLAG_FD_CLOEXEC));
}

[[noreturn]] void Become(const std::vector<std::string>& command, int start, unsigned mostSeconds) {
  char byte = 0;
  while (read(start, &byte, 1) < 0 && errno == EINTR) {
  }
  // SIGALRM ends the program when its time is up; its helpers and workers end with it.
  alarm(mostSeconds);
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(nothing, stream);
  std::vector<std::string> words = command;
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  execv(arguments[0], arguments.data());
  _exit(127);
}

double SecondsOf(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

}  // namespace

void InAnotherProcess(const std::function<void()>& work) {
  const pid_t process = fork();
  if (process == 0) {
    work();
    _exit(0);
  }
  int status = 0;
  while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  if (process < 0 || status != 0) throw std::runtime_error("a process for work has failed");
}

ProcessCost Measure(const std::vector<std::string>& command, unsigned mostSeconds) {
  int start[2];
  if (pipe2(start, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  const pid_t process = fork();
  if (process == 0) {
    close(start[1]);
    Become(command, start[0], mostSeconds);
  }
  close(start[0]);
  if (process < 0) throw std::runtime_error("no process");
  const int counter = OpenInstructionCounter(process);
  close(start[1]);  // the program begins

  int status = 0;
  rusage usage = {};
  while (wait4(process, &status, 0, &usage) < 0 && errno == EINTR) {
  }
  ProcessCost cost;
  if (WIFEXITED(status)) cost.exitStatus = WEXITSTATUS(status);
  cost.tookTooLong = WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM;
  if (cost.exitStatus == 127) throw std::runtime_error("cannot start " + command[0]);
  cost.seconds = SecondsOf(usage.ru_utime) + SecondsOf(usage.ru_stime);
  cost.peakKilobytes = static_cast<uint64_t>(usage.ru_maxrss);
  uint64_t counted = 0;
  if (counter >= 0) {
    if (read(counter, &counted, sizeof counted) == sizeof counted) cost.instructions = counted;
    close(counter);
  }
  return cost;
}

}  // namespace tarn::bench
