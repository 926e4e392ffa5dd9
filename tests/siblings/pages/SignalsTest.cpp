// Signals that end tarnmail in the middle of its pages.

#include <sys/wait.h>

#include <csignal>

#include "PagesFixture.h"

namespace tarn::test {
namespace {

namespace fs = std::filesystem;

class PagesSignals : public PagesFixture {
 protected:
  void expectNothingLeftBy(RunningProgram& program, int signal, const std::string& listing) {
    const std::vector<pages::Descriptor> started = startedBy(program);
    program.send(signal);
    const int status = program.wait();
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << status;
    expectGone(started);
    EXPECT_EQ(directory_.listing(), listing);
    EXPECT_EQ(temporary_.listing(), "");
  }
};

TEST_F(PagesSignals, LeaveNoPages) {
  const std::string file = longTextMail();
  fs::create_directory(directory_.path() / "old");
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
             {"-o", "out"}, {"-o", "old"}, {"-o", "out", "--no-sandbox"}}) {
      std::vector<std::string> all = {"--dpi", "300", file};
      all.insert(all.end(), words.begin(), words.end());
      RunningProgram program(pagesCall(all), {-1, -1, -1});
      ASSERT_TRUE(
          waitForAPage(words[1] == "old" ? directory_.path() / "old" : directory_.path(), program));
      expectNothingLeftBy(program, signal, "mail.eml old");
    }
  }
}

// Its helper has a folder with many files.
TEST_F(PagesSignals, LeaveNothingOfRtf) {
  const std::string file = longRtfMail();
  for (const char* wall : {"--paper=a4", "--no-sandbox"}) {
    SCOPED_TRACE(wall);
    RunningProgram program(pagesCall({"--dpi", "300", "-o", "out", wall, file}), {-1, -1, -1});
    ASSERT_TRUE(waitForAPage(directory_.path(), program));
    expectNothingLeftBy(program, SIGTERM, "mail.msg");
    RunningProgram pdf(pagesCall({"--pdf", "-o", "out.pdf", wall, file}), {-1, -1, -1});
    ASSERT_TRUE(waitForAHelper(pdf));
    expectNothingLeftBy(pdf, SIGTERM, "mail.msg");
  }
}

}  // namespace
}  // namespace tarn::test
