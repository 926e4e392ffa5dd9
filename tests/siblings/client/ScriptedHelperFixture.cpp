#include "ScriptedHelperFixture.h"

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace tarn::test {
namespace {

namespace fs = std::filesystem;
using namespace pages;

// 0 when there is no such process any more.
pid_t ParentOf(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/stat");
  std::string text;
  std::getline(file, text, '\0');
  // "PID (NAME) STATE PARENT ...", where the name may hold anything.
  const size_t end = text.rfind(')');
  return end == std::string::npos ? 0 : static_cast<pid_t>(std::atoi(text.c_str() + end + 4));
}

std::vector<pid_t> AllProcesses() {
  std::vector<pid_t> processes;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    if (std::all_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; })) {
      processes.push_back(static_cast<pid_t>(std::stoi(name)));
    }
  }
  return processes;
}

bool IsHelper(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/cmdline");
  std::string program;
  std::getline(file, program, '\0');
  return program.starts_with(SCRIPTED_PROGRAMS);
}

}  // namespace

std::vector<pid_t> DescendantsOf(pid_t process) {
  std::vector<pid_t> found;
  for (const pid_t candidate : AllProcesses()) {
    pid_t ancestor = ParentOf(candidate);
    while (ancestor > 1 && ancestor != process) ancestor = ParentOf(ancestor);
    if (ancestor == process) found.push_back(candidate);
  }
  return found;
}

std::vector<pid_t> HelpersOf(pid_t process) {
  std::vector<pid_t> helpers = DescendantsOf(process);
  std::erase_if(helpers, [](pid_t candidate) { return !IsHelper(candidate); });
  return helpers;
}

size_t CountOpenFiles() {
  const fs::directory_iterator files("/proc/self/fd");
  return static_cast<size_t>(std::distance(begin(files), end(files)));
}

ScriptedHelperTest::ScriptedHelperTest()
    : openFiles_(CountOpenFiles()),
      temporaryBefore_(std::getenv("TMPDIR") == nullptr
                           ? std::nullopt
                           : std::optional<std::string>(std::getenv("TMPDIR"))) {
  setenv("TMPDIR", temporary_.path().c_str(), 1);
}

ScriptedHelperTest::~ScriptedHelperTest() {
  EXPECT_EQ(temporary_.listing(), "");
  EXPECT_TRUE(DescendantsOf(getpid()).empty());
  EXPECT_EQ(CountOpenFiles(), openFiles_);
  if (temporaryBefore_) {
    setenv("TMPDIR", temporaryBefore_->c_str(), 1);
  } else {
    unsetenv("TMPDIR");
  }
}

HelperOptions ScriptedHelperTest::options() {
  HelperOptions options;
  options.programs = SCRIPTED_PROGRAMS;
  return options;
}

DocumentOnPaper ScriptedHelperTest::document(std::string_view script) {
  DocumentOnPaper document;
  document.bytes = script;
  return document;
}

std::string ScriptedHelperTest::logOf(PageHelper& helper, std::string_view script) {
  return logOf(helper, document(script));
}

std::string ScriptedHelperTest::logOf(PageHelper& helper, const DocumentOnPaper& document) {
  return helper.pdf(helper.layOut(document), {}, {});
}

void ScriptedHelperTest::expectWell(PageHelper& helper) {
  const LaidOut laidOut = helper.layOut(document("layOut pages 3"));
  EXPECT_EQ(laidOut.pageCount, 3);
  const Bitmap bitmap = helper.draw(laidOut, 1, 72);
  EXPECT_EQ(bitmap.width, 36);
  EXPECT_EQ(bitmap.height, 18);
  EXPECT_EQ(bitmap.pixels, std::vector<uint8_t>(36 * 18 * 4, 1));
}

std::string ScriptedHelperTest::describe(const PageFailure& failure) {
  constexpr std::array kNames = {"BadDocument", "NoSuchPage", "TooLarge",     "TooLong",
                                 "HelperDied",  "NoSandbox",  "NotInstalled", "Stopped"};
  return std::string(kNames[static_cast<size_t>(failure.trouble())]) + ": " + failure.what();
}

}  // namespace tarn::test
