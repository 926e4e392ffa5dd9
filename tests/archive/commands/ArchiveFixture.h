// ArchiveFixture.h - the archive commands as processes, with a directory for their files and one
// for their temporary files.
#ifndef TARN_TESTS_ARCHIVE_COMMANDS_ARCHIVEFIXTURE_H
#define TARN_TESTS_ARCHIVE_COMMANDS_ARCHIVEFIXTURE_H

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/Environment.h"
#include "support/TempDirectory.h"
#include "tarnmail/RunProgram.h"

namespace tarn::archive {

class ArchiveCommand : public ::testing::Test {
 protected:
  // Runs tarnmail in `directory_`; no temporary file is left.
  test::ProgramResult run(const std::vector<std::string>& arguments,
                          test::StandardOutput output = test::StandardOutput::Captured) {
    test::ProgramCall call = callOf(arguments);
    call.standardOutput = output;
    test::ProgramResult result = test::RunProgram(call);
    EXPECT_EQ(temporary_.listing(), "");
    return result;
  }

  test::ProgramCall callOf(const std::vector<std::string>& arguments) const {
    test::ProgramCall call;
    call.program = TARNMAIL_PATH;
    call.arguments = arguments;
    call.environment = environment_;
    call.workingDirectory = directory_.path();
    call.standardInput = standardInput_;
    return call;
  }

  // Of a run that has nothing to complain of.
  std::string output(const std::vector<std::string>& arguments) {
    const test::ProgramResult result = run(arguments);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.err, "");
    return result.out;
  }

  // What a run that must end so writes to standard error.
  std::string complaint(int exitStatus, const std::vector<std::string>& arguments) {
    const test::ProgramResult result = run(arguments);
    EXPECT_EQ(result.exitStatus, exitStatus);
    return result.err;
  }

  std::string failure(int exitStatus, const std::vector<std::string>& arguments) {
    const test::ProgramResult result = run(arguments);
    EXPECT_EQ(result.exitStatus, exitStatus);
    EXPECT_EQ(result.out, "");
    return result.err;
  }

  // A file of the examples, copied under its name.
  void example(const std::string& name) {
    const std::filesystem::path from = std::filesystem::path(EXAMPLES_PATH) / name;
    std::filesystem::copy_file(from, directory_.path() / from.filename());
  }

  test::TempDirectory directory_;
  test::TempDirectory temporary_;
  std::optional<std::string> standardInput_;
  std::vector<std::pair<std::string, std::string>> environment_ = {
      {test::kTempVariable, temporary_.path().string()},
      {"TZ", "UTC"},
      {"LC_ALL", "C"},
      {"PAGER", "cat"}};
};

// A mail with some attachments, each with that name; the content of number K is "content K".
inline std::string MailWith(const std::vector<std::string>& names) {
  std::string mail =
      "From: Ann <ann@example.com>\nTo: Bob <bob@example.com>\nSubject: Files\n"
      "Date: Wed, 1 May 2024 12:34:56 +0200\nMIME-Version: 1.0\n"
      "Content-Type: multipart/mixed; boundary=B\n\n--B\nContent-Type: text/plain\n\nSee below.\n";
  int number = 0;
  for (const std::string& name : names) {
    mail +=
        "--B\nContent-Type: application/octet-stream\n"
        "Content-Disposition: attachment; filename=\"" +
        name + "\"\n\ncontent " + std::to_string(++number) + "\n";
  }
  return mail + "--B--\n";
}

inline constexpr const char* kPlainMail =
    "From: Ann Ö <ann@example.com>\nTo: Bob <bob@example.com>\nSubject: Hello\n"
    "Date: Wed, 1 May 2024 12:34:56 +0200\nMessage-ID: <1@example.com>\n"
    "Content-Type: text/plain; charset=utf-8\n\nFirst line\nSecond line\n";

}  // namespace tarn::archive

#endif
