// RunProgram.h - runs a program as a process of its own and keeps what it writes.
#ifndef TARN_TESTS_TARNMAIL_RUNPROGRAM_H
#define TARN_TESTS_TARNMAIL_RUNPROGRAM_H

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace tarn::test {

enum class StandardOutput { Captured, Closed, BrokenPipe, FullDevice };

struct ProgramCall {
  std::filesystem::path program;
  std::vector<std::string> arguments;
  std::vector<std::pair<std::string, std::string>> environment;  // added to the test's own
  std::filesystem::path workingDirectory;                        // empty: the test's own
  StandardOutput standardOutput = StandardOutput::Captured;
};

struct ProgramResult {
  int exitStatus = -1;  // -1 when a signal ended it
  std::string out;      // empty unless captured
  std::string err;
};

// Waits for the program's end; after a minute it is ended by an alarm. File permissions hold for
// the program even when the test runs as root.
ProgramResult RunProgram(const ProgramCall& call);

}  // namespace tarn::test

#endif
