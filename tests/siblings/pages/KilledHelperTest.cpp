// The helpers that are built, killed in the middle of a page.

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "PagesFixture.h"
#include "siblings/Processes.h"

namespace tarn::test {
namespace {

class KilledHelper : public PagesFixture {
 protected:
  struct End {
    int status = 0;  // as of waitpid
    std::string error;
  };

  // What comes of it when the helper is killed after the first page. It is stopped before, until
  // the program waits for its answer: one that ends between two questions is replaced.
  End kill(const std::vector<std::string>& words) {
    TwoEnds error;  // the other way round: the program writes, the test reads
    OpenPipe(error);
    RunningProgram program(pagesCall(words), {-1, -1, error.test});
    error.closeTestsEnd();
    EXPECT_TRUE(waitForAPage(directory_.path(), program));
    const std::vector<pages::Descriptor> started = startedBy(program);
    const std::vector<pid_t> helpers = helpersOf(program);
    EXPECT_EQ(helpers.size(), 1u);
    for (const pid_t helper : helpers) {
      ::kill(helper, SIGSTOP);
      while (!IsStopped(helper) || !IsAsleep(program.process())) usleep(1000);
      ::kill(helper, SIGKILL);
    }
    End end;
    end.error = ReadAll(error.program);
    end.status = program.wait();
    expectGone(started);
    EXPECT_EQ(temporary_.listing(), "");
    return end;
  }

  static void expectFailure(const End& end, const std::string& line) {
    EXPECT_TRUE(WIFEXITED(end.status) && WEXITSTATUS(end.status) == 1) << end.status;
    EXPECT_EQ(end.error, "tarnmail: " + line + " in the middle of the document\n");
  }
};

TEST_F(KilledHelper, IsTheEndOfItsDocumentAlone) {
  for (const std::string& file : {longTextMail(), longRtfMail()}) {
    const std::string helper = file == "mail.msg" ? "tarnmail-office" : "tarnmail-pages";
    const std::string before = directory_.listing();
    const std::vector<std::string> words = {"--dpi", "300", "-o", "out", file};
    std::vector<std::string> alone = words;
    alone.emplace_back("--no-sandbox");
    expectFailure(kill(alone), file + ": " + helper + " was killed by signal 9");
    EXPECT_EQ(directory_.listing(), before);
    const End apart = kill(words);
    // In namespaces it is no child of the program.
    expectFailure(apart, file + ": " + helper +
                             (apart.error.find("status") == std::string::npos
                                  ? " was killed by signal 9"
                                  : " ended with exit status 137"));
    EXPECT_EQ(directory_.listing(), before);
    EXPECT_EQ(output({"pages", "--pages", "1-2", "-o", "next", file}), "");
    EXPECT_TRUE(std::filesystem::exists(directory_.path() / "next/page-0002.png"));
    std::filesystem::remove_all(directory_.path() / "next");
  }
}

}  // namespace
}  // namespace tarn::test
