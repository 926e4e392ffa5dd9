// tarnmail pages on machines that allow less than this one, by OnMachine, which filters system
// calls.

#include "tarnmail/TarnmailFixture.h"

namespace tarn::test {
namespace {

using WordList = std::vector<std::string>;

class PagesWalls : public TarnmailTest {
 protected:
  ProgramResult runWithout(const WordList& walls, const WordList& arguments) {
    ProgramCall call;
    call.program = ON_MACHINE_PATH;
    call.arguments = walls;
    call.arguments.insert(call.arguments.end(), {"--", TARNMAIL_PATH, "pages", "-o", "out"});
    call.arguments.insert(call.arguments.end(), arguments.begin(), arguments.end());
    call.environment = environment_;
    call.workingDirectory = directory_.path();
    const ProgramResult result = RunProgram(call);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(temporary_.listing(), "");
    return result;
  }

  void expectPages(const ProgramResult& result) {
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(directory_.listing(), "out out/page-0001.png");
    std::filesystem::remove_all(directory_.path() / "out");
  }

  void expectRefusal(const ProgramResult& result, const std::string& helper,
                     const std::string& reason) {
    EXPECT_EQ(result.exitStatus, 3);
    EXPECT_EQ(result.err, "tarnmail: " + helper + " cannot be kept apart on this machine (" +
                              reason + "); --no-sandbox does without\n");
    EXPECT_EQ(directory_.listing(), "");
  }
};

TEST_F(PagesWalls, AreOfTheOtherKindWhereThereAreNoNamespaces) {
  expectPages(runWithout({"namespaces"}, {Example("plain-7bit.eml")}));
  expectPages(runWithout({"namespaces"}, {Example("msg/rtf.msg")}));
}

TEST_F(PagesWalls, AreMissedForWhatHasToWrite) {
  const WordList missing = {"namespaces", "landlock"};
  expectPages(runWithout(missing, {Example("plain-7bit.eml")}));
  expectRefusal(runWithout(missing, {Example("msg/rtf.msg")}), "tarnmail-office",
                "no Landlock, and it writes files");
}

TEST_F(PagesWalls, AreMissedUnlessThatIsAllowed) {
  const WordList missing = {"namespaces", "seccomp"};
  expectRefusal(runWithout(missing, {Example("plain-7bit.eml")}), "tarnmail-pages", "no seccomp");
  expectRefusal(runWithout(missing, {Example("msg/rtf.msg")}), "tarnmail-office", "no seccomp");
  expectPages(runWithout(missing, {Example("plain-7bit.eml"), "--no-sandbox"}));
  expectPages(runWithout(missing, {Example("msg/rtf.msg"), "--no-sandbox"}));
}

}  // namespace
}  // namespace tarn::test
