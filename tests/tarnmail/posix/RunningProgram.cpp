#include "tarnmail/posix/RunningProgram.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <utility>
#include <vector>

namespace tarn::test {
namespace {

void Close(int& descriptor) {
  if (descriptor >= 0) close(std::exchange(descriptor, -1));
}

void MakeStream(int descriptor, int source) {
  const int from = source >= 0 ? source : open("/dev/null", O_RDWR | O_CLOEXEC);
  if (dup2(from, descriptor) != descriptor) _exit(120);
}

[[noreturn]] void Start(const ProgramCall& call, const Streams& streams, int ignoredSignal) {
  // Shells ignore some for what they run in the background, and programs go on with that.
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, SIG_DFL);
  if (ignoredSignal != 0) std::signal(ignoredSignal, SIG_IGN);
  for (const auto& [name, value] : call.environment) setenv(name.c_str(), value.c_str(), 1);
  if (!call.workingDirectory.empty() && chdir(call.workingDirectory.c_str()) != 0) _exit(120);
  MakeStream(STDIN_FILENO, streams.input);
  MakeStream(STDOUT_FILENO, streams.output);
  MakeStream(STDERR_FILENO, streams.error);
  std::string program = call.program.string();
  std::vector<std::string> copies = call.arguments;
  std::vector<char*> arguments = {program.data()};
  for (std::string& argument : copies) arguments.push_back(argument.data());
  arguments.push_back(nullptr);
  alarm(60);
  execv(program.c_str(), arguments.data());
  _exit(120);
}

}  // namespace

RunningProgram::RunningProgram(const ProgramCall& call, const Streams& streams, int ignoredSignal) {
  child_ = fork();
  if (child_ == 0) Start(call, streams, ignoredSignal);
  EXPECT_GT(child_, 0);
}

RunningProgram::~RunningProgram() {
  if (child_ <= 0) return;
  kill(child_, SIGKILL);
  wait();
}

void RunningProgram::send(int signal) const { EXPECT_EQ(kill(child_, signal), 0); }

bool RunningProgram::hasEnded() const {
  siginfo_t ended = {};
  return waitid(P_PID, static_cast<id_t>(child_), &ended, WEXITED | WNOHANG | WNOWAIT) != 0 ||
         ended.si_pid != 0;
}

int RunningProgram::wait() {
  int status = 0;
  rusage usage = {};
  while (wait4(child_, &status, 0, &usage) < 0 && errno == EINTR) {
  }
  peakMemory_ = usage.ru_maxrss;
  child_ = -1;
  return status;
}

TwoEnds::~TwoEnds() {
  Close(test);
  Close(program);
}

void TwoEnds::closeTestsEnd() { Close(test); }

void TwoEnds::closeProgramsEnd() { Close(program); }

void OpenPipe(TwoEnds& ends) {
  int pipe[2];
  ASSERT_EQ(pipe2(pipe, O_CLOEXEC), 0);
  ends.program = pipe[0];
  ends.test = pipe[1];
}

void OpenTerminal(TwoEnds& ends) {
  ends.test = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_GE(ends.test, 0);
  ASSERT_EQ(grantpt(ends.test), 0);
  ASSERT_EQ(unlockpt(ends.test), 0);
  ends.program = open(ptsname(ends.test), O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_GE(ends.program, 0);
}

std::string ReadAll(int descriptor) {
  std::string all;
  char part[4096];
  for (;;) {
    const ssize_t got = read(descriptor, part, sizeof part);
    if (got < 0 && errno == EINTR) continue;
    // A terminal that nobody has open any more gives an error in place of an end.
    if (got <= 0) return all;
    all.append(part, static_cast<size_t>(got));
  }
}

}  // namespace tarn::test
