// Exports by tasks: a task or the merge is killed, or the system has no room or no bytes for it.
#include <algorithm>

#include "archive/faults/FaultFixture.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;

class FaultyTask : public FaultyExport {
 protected:
  FaultyTask() { fs::create_directory(path("scratch")); }

  // What one machine makes, and the plan of three tasks for the same.
  void prepare(const std::vector<std::string>& options) {
    makeSources(8);
    std::vector<std::string> planning = {"plan",          path("in"), "-o",          path("plan"),
                                         "--target-cost", "1",        "--max-tasks", "3"};
    planning.insert(planning.end(), options.begin(), options.end());
    ASSERT_EQ(exportInto("whole", options).exitStatus, 0);
    ASSERT_EQ(run(planning).exitStatus, 0);
    whole_ = tree("whole");
  }

  test::ProgramResult task(int number, const Fault& fault = {},
                           const std::vector<std::string>& options = {}) {
    std::vector<std::string> words = {"run-task",  path("plan"), "-o",
                                      path("out"), "--task",     std::to_string(number)};
    words.insert(words.end(), options.begin(), options.end());
    return run(words, fault);
  }
  test::ProgramResult merge(const Fault& fault = {}) {
    return run({"merge", path("plan"), path("out")}, fault);
  }

  // Of the parts, those of attempts that were ended by others left out.
  std::vector<std::string> parts(bool withDrafts) const {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(path("out/parts"), error)) {
      const std::string name = entry.path().filename();
      if (withDrafts || !name.starts_with('.')) names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  void expectWhole() {
    for (const int number : {0, 1, 2}) {
      const test::ProgramResult result = task(number);
      EXPECT_EQ(result.exitStatus, 0) << result.err;
    }
    const test::ProgramResult merged = merge();
    EXPECT_EQ(merged.exitStatus, 0) << merged.err;
    EXPECT_EQ(difference(tree("out"), whole_), "");
  }

  // Calls `take` with points of the numbers from 1 on: the first, and then so many more.
  template <typename Take>
  static void forPoints(uint64_t calls, uint64_t more, const Take& take) {
    ASSERT_GT(calls, 0u);
    constexpr uint64_t kFirst = 6;
    const uint64_t step = std::max<uint64_t>(calls / more, 1);
    for (uint64_t at = 1; at <= calls; at += at < kFirst ? 1 : step) {
      SCOPED_TRACE("call " + std::to_string(at) + " of " + std::to_string(calls));
      take(at);
      if (HasFailure()) return;
    }
  }

  using Names = std::vector<std::string>;
  Tree whole_;
};

TEST_F(FaultyTask, IsMadeAgainWhereItWasKilled) {
  prepare({"--to", "text,mbox", "--dedupe"});
  ASSERT_EQ(task(0).exitStatus, 0);
  const uint64_t changes = calls_;
  forPoints(changes, 12, [&](uint64_t at) {
    fs::remove_all(path("out"));
    ASSERT_EQ(task(0, {"kill", at}).exitStatus, -1);
    EXPECT_TRUE(parts(false).empty() || parts(false) == Names{"0"});
    expectWhole();
  });
}

TEST_F(FaultyTask, LeavesNothingWhereThereIsNoRoom) {
  prepare({"--to", "text,mbox"});
  const std::vector<std::string> staged = {"--stage", path("scratch")};
  for (const char* const folder : {"out", "scratch"}) {
    fs::remove_all(path("out"));
    ASSERT_EQ(task(0, {"full", 0, folder}, staged).exitStatus, 0);
    forPoints(calls_, folder == std::string("out") ? 14 : 2, [&](uint64_t at) {
      fs::remove_all(path("out"));
      const test::ProgramResult full = task(0, {"full", at, folder}, staged);
      EXPECT_EQ(full.exitStatus, 75) << full.err;
      EXPECT_NE(full.err.find("No space left on device"), std::string::npos) << full.err;
      EXPECT_EQ(full.err.find("--resume"), std::string::npos) << full.err;
      EXPECT_EQ(parts(true), Names{});
      EXPECT_TRUE(fs::is_empty(path("scratch")));
    });
  }
  expectWhole();
}

// A read that fails once tells nothing of the input: it has not changed.
TEST_F(FaultyTask, TakesNoInputForChangedThatCannotBeRead) {
  prepare({"--to", "text"});
  int again = 0;
  for (const int number : {0, 1, 2}) {
    fs::remove_all(path("out"));
    ASSERT_EQ(task(number, {"read", 0, "in"}).exitStatus, 0);
    forPoints(calls_, 8, [&](uint64_t at) {
      fs::remove_all(path("out"));
      const test::ProgramResult result = task(number, {"read", at, "in"});
      EXPECT_TRUE(result.exitStatus == 0 || result.exitStatus == 75) << result.err;
      again += result.exitStatus == 75 ? 1 : 0;
    });
  }
  EXPECT_GT(again, 2);
}

class FaultyMerge : public FaultyTask {
 protected:
  // The parts, as they are before each try.
  void prepareParts(const std::vector<std::string>& options) {
    prepare(options);
    for (const int number : {0, 1, 2}) ASSERT_EQ(task(number).exitStatus, 0);
    fs::rename(path("out"), path("parts"));
  }
  void restoreParts() const {
    fs::remove_all(path("out"));
    fs::copy(path("parts"), path("out"), fs::copy_options::recursive);
  }
};

TEST_F(FaultyMerge, GoesOnWhereItWasEnded) {
  prepareParts({"--to", "text,mbox", "--dedupe"});
  restoreParts();
  ASSERT_EQ(merge().exitStatus, 0);
  const uint64_t changes = calls_;
  forPoints(changes, 16, [&](uint64_t at) {
    for (const char* const kind : {"kill", "full", "once"}) {
      SCOPED_TRACE(kind);
      restoreParts();
      const test::ProgramResult result = merge({kind, at});
      const bool isKilled = kind == std::string("kill");
      EXPECT_EQ(result.exitStatus == -1, isKilled);
      // Of what shows the export, and of what is left over, some may be done without.
      if (!isKilled && result.exitStatus != 0) {
        EXPECT_EQ(result.exitStatus, 75) << result.err;
        EXPECT_EQ(result.err.find("--resume"), std::string::npos) << result.err;
      }
      const test::ProgramResult merged = merge();
      EXPECT_EQ(merged.exitStatus, 0) << merged.err;
      EXPECT_EQ(difference(tree("out"), whole_), "");
    }
  });
}

// A part that cannot be read at this moment is not a damaged one.
TEST_F(FaultyMerge, SetsNoPartAsideThatCannotBeRead) {
  prepareParts({"--to", "text,mbox", "--no-catalogue"});
  restoreParts();
  ASSERT_EQ(merge({"read", 0}).exitStatus, 0);
  forPoints(calls_, 24, [&](uint64_t at) {
    restoreParts();
    const test::ProgramResult result = merge({"read", at});
    EXPECT_TRUE(result.exitStatus == 0 || result.exitStatus == 75) << result.err;
    const test::ProgramResult merged = merge();
    EXPECT_EQ(merged.exitStatus, 0) << merged.err;
    EXPECT_EQ(difference(tree("out"), whole_), "");
  });
}

}  // namespace
}  // namespace tarn::archive
