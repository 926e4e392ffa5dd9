#include "ScriptedHelperFixture.h"

#include <unistd.h>

#include "ThisMachine.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <iterator>

namespace tarn::test {

namespace fs = std::filesystem;
using namespace pages;

std::vector<pid_t> HelpersOf(pid_t process) { return DescendantsOf(process, SCRIPTED_PROGRAMS); }

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
  const Machine& machine = ThisMachine();
  options.sandbox = machine.hasNamespaces || (machine.hasSeccomp && machine.hasLandlock);
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
