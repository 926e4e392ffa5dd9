#include "tarnmail/RunProgram.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string_view>

#include "support/TempDirectory.h"

namespace tarn::test {
namespace {

// Everything from here to exec runs in the child, which reports trouble as this exit status.
constexpr int kNotStarted = 120;

void Require(bool condition) {
  if (!condition) _exit(kNotStarted);
}

void MakeStream(int descriptor, int source) { Require(dup2(source, descriptor) == descriptor); }

void SetUpStandardOutput(StandardOutput kind, const std::string& captureFile) {
  switch (kind) {
    case StandardOutput::Captured:
      MakeStream(STDOUT_FILENO, open(captureFile.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
      break;
    case StandardOutput::Closed:
      Require(close(STDOUT_FILENO) == 0);
      break;
    case StandardOutput::BrokenPipe: {
      int ends[2];
      Require(pipe2(ends, O_CLOEXEC) == 0);
      MakeStream(STDOUT_FILENO, ends[1]);
      break;
    }
    case StandardOutput::TakesNothing:
      MakeStream(STDOUT_FILENO, open("/dev/full", O_WRONLY | O_CLOEXEC));
      break;
  }
}

[[noreturn]] void Start(const ProgramCall& call, int input, const std::string& outFile,
                        const std::string& errFile) {
  // Root reads what it likes through these two; other users do not have them.
  prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE, 0, 0, 0);
  prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH, 0, 0, 0);
  for (const auto& [name, value] : call.environment) setenv(name.c_str(), value.c_str(), 1);
  if (!call.workingDirectory.empty()) Require(chdir(call.workingDirectory.c_str()) == 0);
  MakeStream(STDIN_FILENO, input);
  MakeStream(STDERR_FILENO, open(errFile.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
  SetUpStandardOutput(call.standardOutput, outFile);

  std::vector<char*> arguments;
  std::string program = call.program.string();
  arguments.push_back(program.data());
  std::vector<std::string> copies = call.arguments;
  for (std::string& argument : copies) arguments.push_back(argument.data());
  arguments.push_back(nullptr);
  alarm(60);
  execv(program.c_str(), arguments.data());
  _exit(kNotStarted);
}

// A program that ends without reading all leaves a broken pipe, which is no failure of the test.
void Feed(int pipe, std::string_view bytes) {
  const auto before = std::signal(SIGPIPE, SIG_IGN);
  while (!bytes.empty()) {
    const ssize_t written = write(pipe, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) break;
    if (written > 0) bytes.remove_prefix(static_cast<size_t>(written));
  }
  close(pipe);
  std::signal(SIGPIPE, before);
}

}  // namespace

ProgramResult RunProgram(const ProgramCall& call) {
  const TempDirectory captured;
  const std::string outFile = captured.path() / "out";
  const std::string errFile = captured.path() / "err";
  int input[2];
  EXPECT_EQ(pipe2(input, O_CLOEXEC), 0);
  const pid_t child = fork();
  if (child == 0) Start(call, input[0], outFile, errFile);
  close(input[0]);
  Feed(input[1], call.standardInput.value_or(""));

  ProgramResult result;
  if (child < 0) {
    ADD_FAILURE() << "no process could be made";
    return result;
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (WIFEXITED(status)) result.exitStatus = WEXITSTATUS(status);
  EXPECT_NE(result.exitStatus, kNotStarted) << call.program << " could not be started";
  if (call.standardOutput == StandardOutput::Captured) result.out = ReadWholeFile(outFile);
  result.err = ReadWholeFile(errFile);
  return result;
}

}  // namespace tarn::test
