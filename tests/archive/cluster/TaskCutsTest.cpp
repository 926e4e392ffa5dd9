// How entries are shared out among tasks.

#include "archive/cluster/TaskCuts.h"

#include <gtest/gtest.h>

#include <numeric>

#include "support/TempDirectory.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;

class TaskCutsTest : public ::testing::Test {
 protected:
  // An input of one folder with items of these sizes.
  void add(const std::vector<uint64_t>& sizes, bool canBeCut) {
    const size_t number = costs_.size();
    const fs::path path = directory_.path() / std::to_string(number);
    const Outcome<std::unique_ptr<GrowingFile>> plan = GrowingFile::open(path);
    ASSERT_TRUE(plan.ok());
    std::string bytes;
    for (uint64_t row = 0; row < sizes.size(); ++row) {
      PlanEntry entry;
      entry.id = std::to_string(row);
      entry.folder = std::make_shared<const std::vector<std::string>>(1, "Inbox");
      entry.folderPath = "Inbox";
      if (canBeCut) entry.place = ReadingPlace{8, row, row != 0};
      entry.run = 1;
      entry.row = row;
      entry.bytes = sizes[row];
      bytes += Packed(entry);
    }
    ASSERT_FALSE((*plan)->append(bytes));
    costs_.push_back(CostOfInput(number, {path, {}}, 0, true, kMessage));
  }

  std::vector<PlannedTask> cut(uint64_t target, uint64_t most) {
    return CutTasks(costs_, {target, most, kMessage});
  }

  // "cost: input first+entries, ..." of each.
  static std::vector<std::string> linesOf(const std::vector<PlannedTask>& tasks) {
    std::vector<std::string> lines;
    for (const PlannedTask& task : tasks) {
      std::string line = std::to_string(task.cost) + ":";
      for (const PlannedRange& range : task.ranges) {
        line += " " + std::to_string(range.input);
        if (range.range) {
          line += " " + std::to_string(range.first) + "+" + std::to_string(range.entries);
        }
      }
      lines.push_back(line);
    }
    return lines;
  }

  static constexpr uint64_t kMessage = 10;
  test::TempDirectory directory_;
  std::vector<InputCost> costs_;
};

using Lines = std::vector<std::string>;

TEST_F(TaskCutsTest, CutsALargeInputIntoEqualRanges) {
  add(std::vector<uint64_t>(12, 90), true);
  EXPECT_EQ(linesOf(cut(300, 100)),
            (Lines{"300: 0 0+3", "300: 0 3+3", "300: 0 6+3", "300: 0 9+3"}));
}

TEST_F(TaskCutsTest, MakesNoMoreTasksThanAllowed) {
  add(std::vector<uint64_t>(12, 90), true);
  EXPECT_EQ(linesOf(cut(1, 2)), (Lines{"600: 0 0+6", "600: 0 6+6"}));
  EXPECT_EQ(linesOf(cut(1'000'000, 5)), (Lines{"1200: 0"}));
}

TEST_F(TaskCutsTest, TellsARangeByItsFirstPlace) {
  add(std::vector<uint64_t>(4, 90), true);
  const std::vector<PlannedTask> tasks = cut(200, 100);
  ASSERT_EQ(tasks.size(), 2u);
  const PlanRange& range = *tasks[1].ranges[0].range;
  ASSERT_EQ(range.runs.size(), 1u);
  EXPECT_EQ(range.runs[0].place.folder, 8u);
  EXPECT_EQ(range.runs[0].place.row, 2u);
  EXPECT_EQ(range.runs[0].rows, 2u);
  EXPECT_EQ(range.runs[0].folderPath, "Inbox");
}

TEST_F(TaskCutsTest, PacksSmallInputsTheLargestFirst) {
  for (const uint64_t size : {20u, 50u, 40u, 30u, 70u, 10u}) add({size}, false);
  // 80, 60, 50, 40, 30, 20: 280 for two.
  EXPECT_EQ(linesOf(cut(140, 100)), (Lines{"140: 3 4 5", "140: 0 1 2"}));
}

TEST_F(TaskCutsTest, GivesAnInputThatCannotBeCutATaskOfItsOwn) {
  add({1000, 1000, 1000}, false);
  add(std::vector<uint64_t>(8, 90), true);
  EXPECT_EQ(linesOf(cut(400, 100)).front(), "3030: 0");
  for (const PlannedTask& task : cut(400, 100)) EXPECT_LE(task.ranges.size(), 1u);
}

TEST_F(TaskCutsTest, HasEveryEntryOnce) {
  uint64_t seed = 1;
  const auto random = [&seed](uint64_t below) {
    seed = seed * 6364136223846793005u + 1442695040888963407u;
    return (seed >> 33) % below;
  };
  std::vector<uint64_t> expected;
  for (int input = 0; input < 40; ++input) {
    std::vector<uint64_t> sizes(random(input % 5 == 0 ? 400 : 4));
    for (uint64_t& size : sizes) size = random(5000);
    expected.push_back(sizes.size());
    add(sizes, input % 3 != 0);
  }
  for (const uint64_t most : {1u, 2u, 7u, 30u, 1000u}) {
    std::vector<std::vector<std::pair<uint64_t, uint64_t>>> ranges(expected.size());
    const std::vector<PlannedTask> tasks = cut(1, most);
    EXPECT_LE(tasks.size(), most);
    uint64_t before = UINT64_MAX;
    for (const PlannedTask& task : tasks) {
      EXPECT_LE(task.cost, before);
      before = task.cost;
      for (const PlannedRange& range : task.ranges) {
        ranges[range.input].emplace_back(range.first, range.entries);
      }
    }
    for (size_t input = 0; input < ranges.size(); ++input) {
      std::sort(ranges[input].begin(), ranges[input].end());
      uint64_t next = 0;
      for (const auto& [first, entries] : ranges[input]) {
        EXPECT_EQ(first, next);
        next = first + entries;
      }
      EXPECT_EQ(next, expected[input]);
    }
  }
}

TEST_F(TaskCutsTest, BalancesAStoreAndSmallFiles) {
  std::vector<uint64_t> sizes(20'000);
  for (size_t at = 0; at < sizes.size(); ++at) sizes[at] = 500 + at * 7919 % 40'000;
  add(sizes, true);
  for (uint64_t file = 0; file < 500; ++file) add({100 + file * 331 % 9000}, false);
  for (const uint64_t most : {2u, 16u, 27u, 100u}) {
    const std::vector<PlannedTask> tasks = cut(1, most);
    ASSERT_EQ(tasks.size(), most);
    const uint64_t total =
        std::accumulate(tasks.begin(), tasks.end(), uint64_t{0},
                        [](uint64_t sum, const PlannedTask& task) { return sum + task.cost; });
    EXPECT_LE(static_cast<double>(tasks.front().cost),
              1.2 * static_cast<double>(total) / static_cast<double>(most));
  }
}

TEST_F(TaskCutsTest, NeedsNoTaskForNothing) {
  add({}, true);
  EXPECT_TRUE(cut(100, 10).empty());
}

}  // namespace
}  // namespace tarn::archive
