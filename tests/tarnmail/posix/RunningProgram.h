// RunningProgram.h - tarnmail as a process that the test does something to.
#ifndef TARN_TESTS_TARNMAIL_POSIX_RUNNINGPROGRAM_H
#define TARN_TESTS_TARNMAIL_POSIX_RUNNINGPROGRAM_H

#include <sys/types.h>

#include <string>

#include "tarnmail/RunProgram.h"

namespace tarn::test {

// The program's streams; those that are -1 lead to /dev/null. They stay the test's.
struct Streams {
  int input = -1;
  int output = -1;
  int error = -1;
};

class RunningProgram {
 public:
  // With a signal number other than 0 the program begins by ignoring that signal.
  RunningProgram(const ProgramCall& call, const Streams& streams, int ignoredSignal = 0);
  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;
  // Ends the program if it still runs.
  ~RunningProgram();

  pid_t process() const { return child_; }
  void send(int signal) const;
  // It has, but was not waited for.
  bool hasEnded() const;
  // Waits for the end: as of waitpid.
  int wait();
  // The most memory that it had, in kilobytes; after wait().
  long peakMemory() const { return peakMemory_; }

 private:
  pid_t child_ = -1;
  long peakMemory_ = 0;
};

// A pipe or a pseudo terminal of the test: what is written to one end is read at the other.
struct TwoEnds {
  TwoEnds() = default;
  TwoEnds(const TwoEnds&) = delete;
  TwoEnds& operator=(const TwoEnds&) = delete;
  ~TwoEnds();

  void closeTestsEnd();
  void closeProgramsEnd();

  int test = -1;
  int program = -1;
};

// The program reads, the test writes.
void OpenPipe(TwoEnds& ends);
// The program has the terminal, the test is who sits before it.
void OpenTerminal(TwoEnds& ends);

// All that comes until the other end is closed.
std::string ReadAll(int descriptor);

}  // namespace tarn::test

#endif
