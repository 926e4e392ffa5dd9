// Sources that one worker plans while another one adds them up.
#include <tuple>

#include "ExportFixture.h"
#include "archive/export/WorkQueue.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using host::ExitStatus;
using nlohmann::json;

constexpr size_t kLarge = size_t{1} << 20;

class PreparationTest : public ExportFixture {
 protected:
  // Just written, which is in memory.
  fs::path addFile(const std::string& name, const std::string& bytes) {
    return directory_.write(name, bytes);
  }

  std::string addLargeMbox(const std::string& name) {
    std::string box;
    for (int number = 0; box.size() < kLarge; ++number) {
      box += Mail("Mail " + std::to_string(number), number, std::string(20'000, 'x'));
    }
    return addFile(name, box).string();
  }

  ExportSource& addSource(const fs::path& path, SourceKind kind) {
    ExportSource& source = sources_.all.emplace_back();
    source.found = {path.string(), path, kind, true};
    source.name = source.tree = path.filename().string();
    return source;
  }

  using Task = std::pair<size_t, WorkerTask>;
  std::vector<Task> tasksFor(size_t workers) {
    Staging staging(directory_.path() / ("out" + std::to_string(workers)), "", false);
    Progress progress(false);
    WorkQueue queue(sources_, staging, workers, progress);
    std::vector<Task> tasks;
    while (const std::optional<Preparation> next = queue.nextPreparation()) {
      tasks.emplace_back(next->source, next->task);
    }
    return tasks;
  }

  // The tree that any number of workers makes.
  void exportByAny(ExitStatus status) {
    for (const size_t workers : {1u, 2u, 3u}) {
      options_.workers = workers;
      const std::string name = std::to_string(workers);
      EXPECT_EQ(exportTo(name), status);
      EXPECT_EQ(tree(name), tree("1")) << workers;
    }
  }

  ExportSources sources_;
};

TEST_F(PreparationTest, TwoWorkersShareALargeSource) {
  const fs::path box = addFile("box", std::string(kLarge, 'x'));
  addSource(box, SourceKind::Mbox);
  addSource(box, SourceKind::Store);
  EXPECT_EQ(tasksFor(2), (std::vector<Task>{{0, WorkerTask::Plan},
                                            {0, WorkerTask::Sum},
                                            {1, WorkerTask::Plan},
                                            {1, WorkerTask::Sum}}));
  EXPECT_EQ(tasksFor(1),
            (std::vector<Task>{{0, WorkerTask::SumAndPlan}, {1, WorkerTask::SumAndPlan}}));
}

TEST_F(PreparationTest, OneWorkerTakesEveryOther) {
  addSource(addFile("small", std::string(kLarge - 1, 'x')), SourceKind::Mbox);
  addSource(addFile("mail", std::string(kLarge, 'x')), SourceKind::Mail);
  addSource(directory_.path() / "missing", SourceKind::Mbox);
  // A hole is not in memory before it is read.
  const fs::path hole = addFile("hole", "");
  fs::resize_file(hole, 4 * kLarge);
  addSource(hole, SourceKind::Mbox);
  EXPECT_EQ(tasksFor(2), (std::vector<Task>{{0, WorkerTask::SumAndPlan},
                                            {1, WorkerTask::SumAndPlan},
                                            {2, WorkerTask::SumAndPlan},
                                            {3, WorkerTask::SumAndPlan}}));
}

TEST_F(PreparationTest, NobodyAddsUpARangeOrOpensWhatIsLost) {
  addSource("lost", SourceKind::Mbox).trouble = Trouble{TroubleKind::Missing, "is gone"};
  addSource(addFile("box", std::string(kLarge, 'x')), SourceKind::Mbox).range = "range";
  EXPECT_EQ(tasksFor(2), (std::vector<Task>{{1, WorkerTask::Plan}}));
}

TEST_F(PreparationTest, AnyNumberOfWorkersMakesTheSameTree) {
  options_.paths = {addLargeMbox("box"),
                    addFile("damaged.pst", "!BDN" + std::string(2 * kLarge, 'x')).string(),
                    addLargeMbox("later")};
  exportByAny(ExitStatus::Usage);
  const std::vector<json> rows = manifest("2");
  const Outcome<FileSum> sum = SumOfFile(options_.paths[0]);
  ASSERT_TRUE(sum.ok());
  for (const json& row : rows) {
    if (row["type"] != "source") continue;
    const bool isDamaged = row["source"] == options_.paths[1];
    EXPECT_EQ(row["sha256"], isDamaged ? json() : json(sum->sha256));
    EXPECT_EQ(row.contains("reason"), isDamaged);
  }
  EXPECT_EQ(Verify({options_.folder}), ExitStatus::Done);
}

TEST_F(PreparationTest, WhoCannotAddUpASourceLosesIt) {
  options_.paths = {addLargeMbox("box")};
  options_.program = CRASHING_WORKER;
  setenv("CRASH_IN_SUMS", "1", 1);
  exportByAny(ExitStatus::Usage);
  unsetenv("CRASH_IN_SUMS");
  const std::vector<json> rows = manifest("2");
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0]["sha256"], json());
  EXPECT_EQ(rows[0]["found"], 0);
  EXPECT_EQ(rows[0]["reason"], "the process that read it was killed by signal 11");
}

}  // namespace
}  // namespace tarn::archive
