// How a task ends, whoever else does it, and whatever comes between.

#include <array>
#include <csignal>
#include <fstream>
#include <thread>

#include "ClusterFixture.h"
#include "archive/cluster/Machine.h"
#include "console/Json.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using host::ExitStatus;

class RunTaskTest : public ClusterTest {
 protected:
  // What is in the folder of the parts, but for their bytes.
  std::vector<std::string> parts() const {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(at("out/parts"), error)) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  // The status of the task where a line of the environment names it.
  ExitStatus runBy(const char* variable, const char* value, uint64_t offset = 0) {
    setenv(variable, value, 1);
    RunTaskOptions options = taskOptions(0);
    options.task = std::nullopt;
    options.taskOffset = offset;
    const ExitStatus status = RunTask(options);
    unsetenv(variable);
    return status;
  }
};

using Names = std::vector<std::string>;

TEST_F(RunTaskTest, TakesItsNumberFromEngines) {
  addMails("mails", 6);
  (void)plan(6);
  EXPECT_EQ(runBy("SLURM_ARRAY_TASK_ID", "1"), ExitStatus::Done);
  EXPECT_EQ(runBy("JOB_COMPLETION_INDEX", "2"), ExitStatus::Done);
  EXPECT_EQ(runBy("AWS_BATCH_JOB_ARRAY_INDEX", "0", 4), ExitStatus::Done);
  EXPECT_EQ(parts(), (Names{"1", "2", "4"}));
  EXPECT_EQ(runBy("SLURM_ARRAY_TASK_ID", "one"), ExitStatus::Usage);
  EXPECT_EQ(runBy("SLURM_ARRAY_TASK_ID", "2", 4), ExitStatus::Usage);
  RunTaskOptions options = taskOptions(0);
  options.task = std::nullopt;
  EXPECT_EQ(RunTask(options), ExitStatus::Usage);
}

TEST_F(RunTaskTest, RefusesAWrongPlanForGood) {
  addMails("mails", 2);
  (void)plan(2);
  EXPECT_EQ(run(0), ExitStatus::Done);
  exporting_.dedupe = true;
  (void)plan(2);
  EXPECT_EQ(run(0), ExitStatus::Usage);
  std::ofstream(at("plan"), std::ios::app) << "more\n";
  EXPECT_EQ(run(1), ExitStatus::Usage);
  fs::remove(at("plan"));
  EXPECT_EQ(run(1), ExitStatus::Usage);
}

TEST_F(RunTaskTest, DoesNothingThatIsDone) {
  addMails("mails", 1);
  (void)plan(1);
  EXPECT_EQ(run(0), ExitStatus::Done);
  const Tree before = tree("out");
  // It is not even looked at.
  fs::remove_all(at("mails"));
  EXPECT_EQ(run(0), ExitStatus::Done);
  EXPECT_EQ(tree("out"), before);
}

TEST_F(RunTaskTest, RefusesAnInputThatHasChangedForGood) {
  addMails("mails", 1);
  addMbox("box", 10);
  addMaildir("maildir", 4);
  const PlanFile planned = plan(6);
  ASSERT_EQ(planned.tasks(), 6u);
  for (const char* const name : {"mails/100.eml", "box", "maildir/cur/1700000001.M1.host"}) {
    std::string bytes = test::ReadWholeFile(at(name));
    bytes[bytes.size() - 2] = '#';
    std::ofstream(at(name), std::ios::binary) << bytes;
  }
  for (uint64_t task = 0; task < planned.tasks(); ++task) {
    EXPECT_EQ(run(task), ExitStatus::Usage);
  }
  EXPECT_EQ(parts(), Names{});
}

TEST_F(RunTaskTest, TriesAgainWhatCannotBeReadNow) {
  addMails("mails", 1);
  (void)plan(1);
  fs::rename(at("mails"), at("away"));
  EXPECT_EQ(run(0), ExitStatus::Temporary);
  EXPECT_EQ(parts(), Names{});
  fs::rename(at("away"), at("mails"));
  EXPECT_EQ(run(0), ExitStatus::Done);
}

TEST_F(RunTaskTest, TriesAgainWhereNothingCanBeWritten) {
  addMails("mails", 1);
  (void)plan(1);
  std::ofstream(at("out")) << "a file";
  EXPECT_EQ(run(0), ExitStatus::Temporary);
}

TEST_F(RunTaskTest, LeavesFoldersOfOthersAlone) {
  addMails("mails", 1);
  (void)plan(1);
  fs::create_directory(at("out"));
  std::ofstream(at("out/letter")) << "x";
  EXPECT_EQ(run(0), ExitStatus::Usage);
  EXPECT_EQ(tree("out"), (Tree{{"letter", "x"}}));
  fs::remove(at("out/letter"));
  EXPECT_EQ(run(0), ExitStatus::Done);
}

TEST_F(RunTaskTest, SaysForGoodThatTheMachineMakesNoPages) {
  addMails("mails", 1);
  exporting_.choices.forms = {ExportForm::Pdf};
  (void)plan(1);
  RunTaskOptions options = taskOptions(0);
  options.helpers = directory_.path();
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(RunTask(options), ExitStatus::Broken);
  EXPECT_TRUE(
      ::testing::internal::GetCapturedStderr().starts_with("tarnmail: no pages can be made: "));
  EXPECT_FALSE(fs::exists(at("out")));
}

TEST_F(RunTaskTest, TakesThePlaceOfADamagedPart) {
  addMails("mails", 1);
  (void)exportAlone();
  (void)plan(1);
  for (const char* const facts : {"nonsense", ""}) {
    EXPECT_EQ(run(0), ExitStatus::Done);
    std::ofstream(at("out/parts/0/part.json")) << facts;
    if (*facts == '\0') fs::remove(at("out/parts/0/part.json"));
    EXPECT_EQ(missing(), "0\n");
    EXPECT_EQ(run(0), ExitStatus::Done);
    EXPECT_EQ(missing(), "");
    EXPECT_EQ(parts(), (Names{"0", "0.damaged"}));
  }
  EXPECT_EQ(Merge(mergeOptions()), ExitStatus::Done);
  EXPECT_EQ(differences(tree("out"), tree("single")), "");
}

TEST_F(RunTaskTest, LeavesNothingAfterTheMerge) {
  addMails("mails", 2);
  (void)exportAlone();
  (void)plan(1);
  // Slower than another attempt and the merge; a server may have kept what it made.
  for (const bool isKept : {false, true}) {
    fs::remove_all(at("out"));
    RunTaskOptions options = taskOptions(0);
    int change = 0;
    options.step = [&] {
      // The last one before the part is put into its place.
      if (++change != 3) return;
      const fs::path draft = at("out/parts") / parts().front();
      if (isKept) fs::rename(draft, at("kept"));
      const auto others = [this] {
        return static_cast<int>(run(0)) + static_cast<int>(Merge(mergeOptions()));
      };
      EXPECT_EQ(inProcess(others), 0);
      EXPECT_FALSE(fs::exists(at("out/parts")));
      if (!isKept) return;
      fs::create_directory(at("out/parts"));
      fs::rename(at("kept"), draft);
    };
    EXPECT_EQ(RunTask(options), isKept ? ExitStatus::Done : ExitStatus::Temporary);
    EXPECT_EQ(run(0), ExitStatus::Done);
    EXPECT_EQ(differences(tree("out"), tree("single")), "");
  }
}

TEST_F(RunTaskTest, TakesCopiesOfItsInputs) {
  addAll();
  const ExitStatus alone = exportAlone();
  const PlanFile planned = plan(5);
  fs::create_directory(at("scratch"));
  for (uint64_t task = 0; task < planned.tasks(); ++task) {
    RunTaskOptions options = taskOptions(task);
    options.stage = text("scratch");
    EXPECT_EQ(RunTask(options), ExitStatus::Done);
    EXPECT_TRUE(fs::is_empty(at("scratch")));
  }
  EXPECT_EQ(merge(), alone);
  EXPECT_EQ(differences(tree("out"), tree("single")), "");
}

TEST_F(RunTaskTest, SeesInACopyThatAnInputHasChanged) {
  addMbox("box", 10);
  (void)plan(2);
  std::ofstream(at("box"), std::ios::app) << "\n";
  fs::create_directory(at("scratch"));
  RunTaskOptions options = taskOptions(1);
  options.stage = text("scratch");
  EXPECT_EQ(RunTask(options), ExitStatus::Usage);
  EXPECT_TRUE(fs::is_empty(at("scratch")));
}

TEST_F(RunTaskTest, IsCommittedOnceByEightAtATime) {
  addMbox("box", 40);
  addMails("mails", 3);
  (void)exportAlone();
  const PlanFile planned = plan(2);
  std::vector<pid_t> children;
  for (int attempt = 0; attempt < 8; ++attempt) {
    const pid_t child = fork();
    if (child == 0) {
      setenv("LLVM_PROFILE_FILE", "/dev/null", 1);
      _exit(static_cast<int>(run(0)));
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 0);
  }
  EXPECT_EQ(parts(), Names{"0"});
  EXPECT_EQ(run(1), ExitStatus::Done);
  EXPECT_EQ(merge(), ExitStatus::Done);
  EXPECT_EQ(differences(tree("out"), tree("single")), "");
}

TEST_F(RunTaskTest, NamesBothWhereAnotherAttemptHasOtherBytes) {
  addMails("mails", 1);
  (void)plan(1);
  // While this one works, another one commits what it has read elsewhere.
  RunTaskOptions options = taskOptions(0);
  bool isFirst = true;
  options.step = [&] {
    if (!std::exchange(isFirst, false)) return;
    EXPECT_EQ(WEXITSTATUS(inProcess([this] { return static_cast<int>(run(0)); })), 0);
    const fs::path part = at("out/parts/0/part.json");
    auto facts = host::ParsedJson<nlohmann::ordered_json>(test::ReadWholeFile(part));
    facts["sha256"] = std::string(64, '0');
    std::ofstream(part) << host::JsonLine(facts) << "\n";
  };
  EXPECT_EQ(RunTask(options), ExitStatus::Usage);
  const Names names = parts();
  ASSERT_EQ(names.size(), 2u);
  EXPECT_EQ(names[0], "0");
  EXPECT_TRUE(names[1].starts_with("0.other-"));
}

TEST_F(RunTaskTest, GivesWayToOneThatWasFirst) {
  addMails("mails", 1);
  (void)plan(1);
  RunTaskOptions options = taskOptions(0);
  bool isFirst = true;
  options.step = [&] {
    if (!std::exchange(isFirst, false)) return;
    EXPECT_EQ(WEXITSTATUS(inProcess([this] { return static_cast<int>(run(0)); })), 0);
  };
  EXPECT_EQ(RunTask(options), ExitStatus::Done);
  EXPECT_EQ(parts(), Names{"0"});
}

TEST_F(RunTaskTest, LeavesNothingInTheWayWhereItIsKilled) {
  addMbox("box", 40);
  (void)exportAlone();
  (void)plan(1);
  int killed = 0;
  for (int change = 1; change < 100; ++change) {
    fs::remove_all(at("out"));
    const int status = inProcess([&] {
      int changes = 0;
      RunTaskOptions options = taskOptions(0);
      options.step = [&] {
        if (++changes == change) std::raise(SIGKILL);
      };
      return static_cast<int>(RunTask(options));
    });
    if (!WIFSIGNALED(status)) break;
    ++killed;
    EXPECT_EQ(run(0), ExitStatus::Done);
    EXPECT_EQ(parts(), Names{"0"}) << "killed at change " << change;
    EXPECT_EQ(merge(), ExitStatus::Done);
    EXPECT_EQ(differences(tree("out"), tree("single")), "") << "killed at change " << change;
  }
  EXPECT_GE(killed, 4);
}

TEST_F(RunTaskTest, LeavesTheFoldersOfAttemptsThatMayBeAtWork) {
  addMails("mails", 1);
  (void)plan(1);
  const std::string own = ProcessName();
  ASSERT_NE(own, "");
  ASSERT_EQ(own.find('.'), std::string::npos);
  std::string ended;
  {
    std::array<int, 2> ends = {};
    ASSERT_EQ(pipe(ends.data()), 0);
    (void)inProcess([&] {
      const std::string name = ProcessName();
      return write(ends[1], name.data(), name.size()) < 0 ? 1 : 0;
    });
    std::array<char, 256> name = {};
    ASSERT_GT(read(ends[0], name.data(), name.size() - 1), 0);
    ended = name.data();
    for (const int end : ends) close(end);
  }
  std::string elsewhere = ended;
  elsewhere[0] = elsewhere[0] == '0' ? '1' : '0';
  // The number of a living process that another one had before.
  const std::string before = own.substr(0, own.rfind('-')) + "-1";
  EXPECT_FALSE(HasEnded(own));
  EXPECT_FALSE(HasEnded(elsewhere));
  EXPECT_TRUE(HasEnded(ended));
  EXPECT_TRUE(HasEnded(before));
  for (const std::string& none :
       {std::string(), std::string("-"), own.substr(0, own.find('-') + 1)})
    EXPECT_FALSE(HasEnded(none));
  for (const std::string& name : {"0." + own + ".a", "0." + elsewhere + ".b", "0." + ended + ".c",
                                  "0." + before + ".d", std::string("0.f"), "1." + ended + ".e"}) {
    fs::create_directories(at("out/parts/." + name) / "work");
  }
  EXPECT_EQ(run(0), ExitStatus::Done);
  Names left = {".0." + own + ".a", ".0." + elsewhere + ".b", ".0.f", ".1." + ended + ".e", "0"};
  std::sort(left.begin(), left.end());
  EXPECT_EQ(parts(), left);
  EXPECT_EQ(merge(), ExitStatus::Done);
  EXPECT_FALSE(fs::exists(at("out/parts")));
}

TEST_F(RunTaskTest, CleansUpWhereItIsAskedToEnd) {
  addMbox("box", 40);
  (void)plan(1);
  for (const int signal : {SIGTERM, SIGINT}) {
    const int status = inProcess([&] {
      // The first moment at which its folder is there.
      std::thread([&] {
        while (parts().empty()) std::this_thread::yield();
        kill(getpid(), signal);
      }).detach();
      return static_cast<int>(run(0));
    });
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 75);
    EXPECT_EQ(parts(), Names{});
  }
}

TEST_F(RunTaskTest, CleansUpAtEveryStage) {
  addMbox("box", 40);
  fs::create_directory(at("scratch"));
  (void)plan(1);
  bool isCommitted = false;
  for (int change = 1; !isCommitted; ++change) {
    const int status = inProcess([&] {
      int changes = 0;
      RunTaskOptions options = taskOptions(0);
      options.stage = text("scratch");
      options.step = [&] {
        if (++changes == change) std::raise(SIGTERM);
      };
      return static_cast<int>(RunTask(options));
    });
    ASSERT_TRUE(WIFEXITED(status));
    isCommitted = WEXITSTATUS(status) == 0;
    EXPECT_EQ(WEXITSTATUS(status), isCommitted ? 0 : 75);
    EXPECT_EQ(parts(), isCommitted ? Names{"0"} : Names{});
    EXPECT_TRUE(fs::is_empty(at("scratch")));
    // It is its place alone that cannot be taken back.
    EXPECT_EQ(isCommitted, change == 3) << change;
  }
}

TEST_F(RunTaskTest, TellsWhatAPartHas) {
  addMbox("box", 10);
  const PlanFile planned = plan(1);
  EXPECT_EQ(run(0), ExitStatus::Done);
  const auto part =
      host::ParsedJson<nlohmann::json>(test::ReadWholeFile(at("out/parts/0/part.json")));
  EXPECT_EQ(part["plan"], planned.id());
  EXPECT_EQ(part["task"], 0);
  EXPECT_EQ(part["items"], 10);
  EXPECT_EQ(part["exported"], 10);
  EXPECT_EQ(part["failed"], 0);
  EXPECT_EQ(part["sha256"].get<std::string>().size(), 64u);
}

TEST_F(RunTaskTest, HasTheSameSumInHoweverManyProcesses) {
  addStore("store.pst", 80);
  (void)plan(1);
  EXPECT_EQ(run(0), ExitStatus::Done);
  const auto sum = [this](const char* name) {
    return host::ParsedJson<nlohmann::json>(test::ReadWholeFile(at(name)))["sha256"];
  };
  RunTaskOptions options = taskOptions(0);
  options.folder = text("other");
  options.workers = 3;
  EXPECT_EQ(RunTask(options), ExitStatus::Done);
  EXPECT_EQ(sum("out/parts/0/part.json"), sum("other/parts/0/part.json"));
}

}  // namespace
}  // namespace tarn::archive
