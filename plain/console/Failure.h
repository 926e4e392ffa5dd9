// Failure.h - how a command ends that cannot do what it was asked: an exit status and one line.
#ifndef TARN_CONSOLE_FAILURE_H
#define TARN_CONSOLE_FAILURE_H

#include <cstdint>
#include <stdexcept>
#include <string>

namespace tarn::host {

enum class ExitStatus {
  Done = 0,
  Failed = 1,     // the filter refused the file, or the output could not be written
  Usage = 2,      // the command line, or a file or directory that it names, cannot be used
  Broken = 3,     // the filter library or the machine is not as it should be, programs or packages
                  // that the command needs are missing, or something was left in the kernel
  Temporary = 75  // what an engine for many machines tries again
};

// The line names what it is about, and is printed after "tarnmail: " with its control characters
// escaped.
class Failure : public std::runtime_error {
 public:
  Failure(ExitStatus status, const std::string& line) : std::runtime_error(line), status_(status) {}
  Failure(ExitStatus status, const std::string& subject, const std::string& what)
      : Failure(status, subject + ": " + what) {}

  ExitStatus status() const { return status_; }

 private:
  ExitStatus status_;
};

// The filter's own refusal: its code, and the reason in words, which end with the code.
class Refusal : public Failure {
 public:
  Refusal(const std::string& subject, int32_t code, const std::string& reason)
      : Failure(ExitStatus::Failed, subject, reason), code_(code), reason_(reason) {}

  int32_t code() const { return code_; }
  const std::string& reason() const { return reason_; }

 private:
  int32_t code_;
  std::string reason_;
};

}  // namespace tarn::host

#endif
