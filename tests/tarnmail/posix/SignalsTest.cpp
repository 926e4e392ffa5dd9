// The folder of temporary files, while there is one and after the signals that end a program.

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "support/SampleMails.h"
#include "tarnmail/TarnmailFixture.h"
#include "tarnmail/posix/RunningProgram.h"

namespace tarn::test {
namespace {

namespace fs = std::filesystem;

class Signals : public TarnmailTest {
 protected:
  Signals() {
    OpenPipe(input_);
    call_.program = TARNMAIL_PATH;
    call_.arguments = {"info", "-"};
    call_.environment = environment_;
    call_.workingDirectory = directory_.path();
  }

  // Waits until the program has taken what is written to its standard input so far, and wants more;
  // the folder that it has then.
  fs::path folderOfProgram() {
    for (;;) {
      for (const fs::directory_entry& entry : fs::directory_iterator(temporary_.path())) {
        std::error_code error;
        if (fs::file_size(entry.path() / "mail", error) == kPlainMail.size() && !error) {
          return entry.path();
        }
      }
      usleep(1000);
    }
  }

  void writeMail() const {
    ASSERT_EQ(write(input_.test, kPlainMail.data(), kPlainMail.size()),
              static_cast<ssize_t>(kPlainMail.size()));
  }

  TwoEnds input_;
  ProgramCall call_;
};

TEST_F(Signals, FindAFolderThatIsPrivate) {
  umask(0);
  RunningProgram program(call_, {input_.program, -1, -1});
  umask(022);
  writeMail();
  const fs::path folder = folderOfProgram();
  EXPECT_TRUE(folder.filename().string().starts_with("tarnmail-"));
  EXPECT_EQ(fs::status(folder).permissions(), fs::perms::owner_all);
  input_.closeTestsEnd();
  EXPECT_EQ(program.wait(), 0);
  EXPECT_EQ(temporary_.listing(), "");
}

TEST_F(Signals, LeaveNoFolder) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    RunningProgram program(call_, {input_.program, -1, -1});
    writeMail();
    const fs::path folder = folderOfProgram();
    // Whatever else is there goes, too, and what a link leads to stays.
    fs::create_directory(folder / "images");
    fs::create_directory_symlink(directory_.path(), folder / "images" / "link");
    directory_.write("kept", "k");
    program.send(signal);
    const int status = program.wait();
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << status;
    EXPECT_EQ(temporary_.listing(), "");
    EXPECT_EQ(directory_.listing(), "kept");
  }
}

TEST_F(Signals, ThatTheProgramWasStartedToIgnoreAreIgnored) {
  RunningProgram program(call_, {input_.program, -1, -1}, SIGHUP);
  writeMail();
  folderOfProgram();
  program.send(SIGHUP);
  input_.closeTestsEnd();
  EXPECT_EQ(program.wait(), 0);
  EXPECT_EQ(temporary_.listing(), "");
}

}  // namespace
}  // namespace tarn::test
