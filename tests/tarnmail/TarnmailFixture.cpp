#include "TarnmailFixture.h"

#include <algorithm>
#include <fstream>

#include "support/Environment.h"

namespace tarn::test {
namespace {

constexpr std::string_view kPrefix = "tarnmail: ";

}  // namespace

TarnmailTest::TarnmailTest() : program_(TARNMAIL_PATH) {
  environment_ = {{kTempVariable, Utf8(temporary_.path())},
                  {"TZ", "UTC"},
                  {"LC_ALL", "C"},
                  {"TARNBASE_REPORT_LEAKS", "1"}};
}

ProgramResult TarnmailTest::run(const std::vector<std::string>& arguments,
                                StandardOutput standardOutput) {
  ProgramCall call;
  call.program = program_;
  call.arguments = arguments;
  call.environment = environment_;
  call.workingDirectory = directory_.path();
  call.standardOutput = standardOutput;
  call.standardInput = standardInput_;
  ProgramResult result = RunProgram(call);

  EXPECT_EQ(temporary_.listing(), "");
  if (result.exitStatus == 0) {
    EXPECT_EQ(result.err, "");
  } else {
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err.substr(0, kPrefix.size()), kPrefix);
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_EQ(result.err.back(), '\n');
  }
  return result;
}

std::string TarnmailTest::output(const std::vector<std::string>& arguments) {
  const ProgramResult result = run(arguments);
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  return result.out;
}

std::string TarnmailTest::failure(int exitStatus, const std::vector<std::string>& arguments,
                                  StandardOutput standardOutput) {
  const ProgramResult result = run(arguments, standardOutput);
  EXPECT_EQ(result.exitStatus, exitStatus);
  if (result.err.size() <= kPrefix.size()) return result.err;
  return result.err.substr(kPrefix.size(), result.err.size() - kPrefix.size() - 1);
}

std::string TarnmailTest::mail(std::string_view bytes, const std::string& name) {
  std::ofstream stream(directory_.path() / Path(name), std::ios::binary);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  EXPECT_TRUE(stream.good()) << name;
  return name;
}

void TarnmailTest::useFilter(const std::filesystem::path& library) {
  namespace fs = std::filesystem;
  program_ = copies_.path() / fs::path(TARNMAIL_PATH).filename();
  fs::copy_file(TARNMAIL_PATH, program_);
  fs::copy_file(TARNBASE_PATH, copies_.path() / fs::path(TARNBASE_PATH).filename());
  if (!library.empty()) fs::copy_file(library, copies_.path() / FILTER_FILE_NAME);
}

std::filesystem::path Path(std::string_view text) {
  return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

std::string Utf8(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return std::string(text.begin(), text.end());
}

// With its drive, where there are drives: the program runs in another directory.
std::string Example(const std::string& name) {
  return Utf8(std::filesystem::absolute(EXAMPLES_PATH)) + "/" + name;
}

}  // namespace tarn::test
