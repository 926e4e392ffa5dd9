// Signals that end tarnmail in the middle of its pages.

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "support/SampleMails.h"
#include "tarnmail/TarnmailFixture.h"
#include "tarnmail/posix/RunningProgram.h"

namespace tarn::test {
namespace {

namespace fs = std::filesystem;

class PagesSignals : public TarnmailTest {
 protected:
  // Far more pages than are made until the signal comes.
  std::string longMail() {
    std::string text = kSampleFields + "\r\n";
    for (int i = 0; i < 20000; ++i) text += "line\r\n";
    return mail(text);
  }

  // Waits for the first page to be written to where it is hidden. False: the program has ended.
  bool waitForAPage(const fs::path& parent, const RunningProgram& program) const {
    while (!program.hasEnded()) {
      for (const fs::directory_entry& entry : fs::directory_iterator(parent)) {
        if (entry.path().extension() == ".part" && fs::exists(entry.path() / "page-0001.png"))
          return true;
      }
      usleep(1000);
    }
    return false;
  }
};

TEST_F(PagesSignals, LeaveNoPages) {
  ProgramCall call;
  call.program = TARNMAIL_PATH;
  call.environment = environment_;
  call.workingDirectory = directory_.path();
  const std::string file = longMail();
  fs::create_directory(directory_.path() / "old");
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
             {"-o", "out"}, {"-o", "old"}, {"-o", "out", "--no-sandbox"}}) {
      call.arguments = {"pages", "--dpi", "300", file};
      call.arguments.insert(call.arguments.end(), words.begin(), words.end());
      RunningProgram program(call, {-1, -1, -1});
      ASSERT_TRUE(
          waitForAPage(words[1] == "old" ? directory_.path() / "old" : directory_.path(), program));
      program.send(signal);
      const int status = program.wait();
      EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << status;
      EXPECT_EQ(directory_.listing(), "mail.eml old");
      EXPECT_EQ(temporary_.listing(), "");
    }
  }
}

}  // namespace
}  // namespace tarn::test
