// TarnmailFixture.h - tarnmail as a process, with a directory for its files and one for its
// temporary files.
#ifndef TARN_TESTS_TARNMAIL_TARNMAILFIXTURE_H
#define TARN_TESTS_TARNMAIL_TARNMAILFIXTURE_H

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RunProgram.h"
#include "support/TempDirectory.h"

namespace tarn::test {

class TarnmailTest : public ::testing::Test {
 protected:
  TarnmailTest();

  // Runs tarnmail in `directory_`. Whatever it was asked, it must leave no temporary file and no
  // kernel block; it writes nothing to standard error when it succeeds, and one line there
  // and nothing to standard output when it fails.
  ProgramResult run(const std::vector<std::string>& arguments,
                    StandardOutput standardOutput = StandardOutput::Captured);

  // What the next runs find on their standard input, through a pipe; else there is nothing to read.
  std::optional<std::string> standardInput_;

  // The output of a run that must succeed.
  std::string output(const std::vector<std::string>& arguments);

  // The line of a run that must fail with that exit status, without "tarnmail: " and line end.
  std::string failure(int exitStatus, const std::vector<std::string>& arguments,
                      StandardOutput standardOutput = StandardOutput::Captured);

  // Writes a file into `directory_` and returns its name, which is UTF-8.
  std::string mail(std::string_view bytes, const std::string& name = "mail.eml");

  // Uses a copy of tarnmail that has this library, or none, in place of the filter.
  void useFilter(const std::filesystem::path& library);

  TempDirectory directory_;
  TempDirectory temporary_;
  std::vector<std::pair<std::string, std::string>> environment_;

 private:
  std::filesystem::path program_;
  TempDirectory copies_;
};

// Paths of UTF-8, and back.
std::filesystem::path Path(std::string_view text);
std::string Utf8(const std::filesystem::path& path);

// Path of a mail in examples/.
std::string Example(const std::string& name);

}  // namespace tarn::test

#endif
