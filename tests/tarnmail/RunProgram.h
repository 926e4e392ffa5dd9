// RunProgram.h - runs a program as a process of its own and keeps what it writes. One folder a
// system implements it.
#ifndef TARN_TESTS_TARNMAIL_RUNPROGRAM_H
#define TARN_TESTS_TARNMAIL_RUNPROGRAM_H

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tarn::test {

enum class StandardOutput {
  Captured,
  Closed,
  BrokenPipe,
  TakesNothing  // open, and each write fails: a full device; on Windows a handle for reading alone
};

struct ProgramCall {
  std::filesystem::path program;
  std::vector<std::string> arguments;  // UTF-8; where arguments are bytes, any bytes
  std::vector<std::pair<std::string, std::string>> environment;  // added to the test's own
  std::filesystem::path workingDirectory;                        // empty: the test's own
  StandardOutput standardOutput = StandardOutput::Captured;
  std::optional<std::string> standardInput;  // comes through a pipe; else there is nothing to read
};

struct ProgramResult {
  int exitStatus = -1;  // -1 when a signal ended it, or what ends programs on Windows
  std::string out;      // empty unless captured
  std::string err;
};

// Waits for the program's end; after a minute it is ended. It has its standard streams and no other
// file of the test's. File permissions hold for the program even when the test runs as root.
ProgramResult RunProgram(const ProgramCall& call);

}  // namespace tarn::test

#endif
