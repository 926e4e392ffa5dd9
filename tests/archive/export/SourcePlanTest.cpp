#include "archive/export/SourcePlan.h"

#include <gtest/gtest.h>

#include "FakeItems.h"
#include "support/TempDirectory.h"

namespace tarn::archive {
namespace {

using test::FolderOf;

class SourcePlanTest : public ::testing::Test {
 protected:
  // The entries as lines "folder path/name", "lost ID: reason" and "trouble: reason".
  std::vector<std::string> plan(const FilterOptions& options = {}, const PlanLimits& limits = {}) {
    return planOf(reader_, options, limits);
  }

  std::vector<std::string> planOf(ItemReader& reader, const FilterOptions& options = {},
                                  const PlanLimits& limits = {}) {
    ItemFilter filter(options);
    place_.path = directory_.path() / "plan";
    const Outcome<WrittenPlan> written =
        WritePlan(reader, filter, limits, place_.path, [&] { ++beats_; });
    EXPECT_TRUE(written.ok());
    place_.bytes = written->bytes;
    const Outcome<std::unique_ptr<PlanReader>> plan = PlanReader::open(place_);
    EXPECT_TRUE(plan.ok());
    std::vector<std::string> lines;
    for (;;) {
      const Outcome<std::optional<PlanEntry>> entry = (*plan)->next();
      if (!entry.ok() || !*entry) break;
      lines.push_back(lineOf(**entry));
    }
    EXPECT_EQ(lines.size(), written->entries);
    return lines;
  }

  static std::string lineOf(const PlanEntry& entry) {
    switch (entry.kind) {
      case PlanKind::Item:
        return entry.folderPath + "/" + entry.name;
      case PlanKind::LostItem:
        return "lost " + entry.id + ": " + entry.reason;
      case PlanKind::Trouble:
        break;
    }
    return "trouble: " + entry.reason;
  }

  test::TempDirectory directory_;
  test::FakeReader reader_;
  PlanPlace place_;  // of the plan that was made last
  int beats_ = 0;
};

using Lines = std::vector<std::string>;

TEST_F(SourcePlanTest, AppendsTheIdToBothOfTwoNames) {
  reader_.item("21", "Plans");
  reader_.item("22", "Other");
  reader_.item("23", "PLANS");
  EXPECT_EQ(plan(),
            (Lines{"/2024-05-01 Plans [21]", "/2024-05-01 Other", "/2024-05-01 PLANS [23]"}));
  EXPECT_EQ(beats_, 3);
}

TEST_F(SourcePlanTest, KeepsNamesThatLookAlikeApart) {
  reader_.item("21", "Plans");
  reader_.item("22", "Plans");
  reader_.item("23", "Plans [21]");
  EXPECT_EQ(plan(), (Lines{"/2024-05-01 Plans [21]", "/2024-05-01 Plans [22]",
                           "/2024-05-01 Plans [21] [23]"}));
}

TEST_F(SourcePlanTest, KeepsTheNamesOfFoldersFree) {
  reader_.item("21", "Plans", FolderOf({"In"}));
  reader_.folder(FolderOf({"In", "2024-05-01 Plans"}));
  EXPECT_EQ(plan(), (Lines{"In/2024-05-01 Plans [21]"}));
}

TEST_F(SourcePlanTest, GivesTheSameNamesWhateverTheFilterTakes) {
  reader_.item("21", "Plans").own().from.name = "Ann";
  reader_.item("22", "Plans").own().from.name = "Bob";
  FilterOptions options;
  options.from = "bob";
  EXPECT_EQ(plan(options), (Lines{"/2024-05-01 Plans [22]"}));
}

TEST_F(SourcePlanTest, TellsWhatCannotBeRead) {
  reader_.trouble("", "a page is damaged");
  reader_.item("21", "Plans");
  reader_.trouble("22", "the row is damaged");
  EXPECT_EQ(plan(), (Lines{"trouble: a page is damaged", "/2024-05-01 Plans",
                           "lost 22: the row is damaged"}));
}

TEST_F(SourcePlanTest, EndsWhereItIsTold) {
  for (int number = 0; number < 5; ++number) {
    reader_.item(std::to_string(number), "Subject " + std::to_string(number));
  }
  EXPECT_EQ(
      plan({}, {2, "the reader crashed"}),
      (Lines{"/2024-05-01 Subject 0", "/2024-05-01 Subject 1", "trouble: the reader crashed"}));
}

TEST_F(SourcePlanTest, PassesOverEntriesAndGoesOn) {
  for (int number = 0; number < 4; ++number) {
    reader_.item(std::to_string(number), "Subject " + std::to_string(number));
  }
  EXPECT_EQ(plan({}, {UINT64_MAX, "", {{1, "it crashed"}}}),
            (Lines{"/2024-05-01 Subject 0", "lost 1: it crashed", "/2024-05-01 Subject 2",
                   "/2024-05-01 Subject 3"}));
}

TEST_F(SourcePlanTest, KeepsAllOfAnEntry) {
  reader_.item("21", "Plans", FolderOf({"In", "a/b"}));
  (void)plan();
  const Outcome<std::unique_ptr<PlanReader>> read = PlanReader::open(place_);
  ASSERT_TRUE(read.ok());
  const Outcome<std::optional<PlanEntry>> entry = (*read)->next();
  ASSERT_TRUE(entry.ok() && *entry);
  EXPECT_EQ((*entry)->id, "21");
  EXPECT_EQ((*entry)->parent, std::nullopt);
  EXPECT_EQ(*(*entry)->folder, (std::vector<std::string>{"In", "a/b"}));
  EXPECT_EQ((*entry)->folderPath, "In/a_b");
}

TEST_F(SourcePlanTest, GoesOnFromAnOffset) {
  for (int number = 0; number < 2000; ++number) {
    reader_.item(std::to_string(number), "Subject " + std::to_string(number));
  }
  ASSERT_EQ(plan().size(), 2000u);
  ASSERT_TRUE(place_.bytes.empty());
  const Outcome<std::unique_ptr<PlanReader>> read = PlanReader::open(place_);
  ASSERT_TRUE(read.ok());
  for (int number = 0; number < 1500; ++number) (void)(*read)->next();
  const Outcome<std::unique_ptr<PlanReader>> later = PlanReader::open(place_, (*read)->offset());
  ASSERT_TRUE(later.ok());
  EXPECT_EQ((**(*later)->next()).id, "1500");
}

TEST_F(SourcePlanTest, GoesOnInAShortPlanToo) {
  for (int number = 0; number < 3; ++number) reader_.item(std::to_string(number), "Plans");
  ASSERT_EQ(plan().size(), 3u);
  ASSERT_FALSE(place_.bytes.empty());
  EXPECT_FALSE(std::filesystem::exists(place_.path));
  const Outcome<std::unique_ptr<PlanReader>> read = PlanReader::open(place_);
  ASSERT_TRUE(read.ok());
  for (int number = 0; number < 2; ++number) (void)(*read)->next();
  const Outcome<std::unique_ptr<PlanReader>> later = PlanReader::open(place_, (*read)->offset());
  ASSERT_TRUE(later.ok());
  EXPECT_EQ((**(*later)->next()).id, "2");
  EXPECT_EQ(*(*later)->next(), std::nullopt);
  const Outcome<std::unique_ptr<PlanReader>> after = PlanReader::open(place_, 1'000'000);
  ASSERT_TRUE(after.ok());
  EXPECT_EQ(*(*after)->next(), std::nullopt);
}

TEST_F(SourcePlanTest, PutsIntoAFileWhatIsNotShort) {
  const auto sizeInMemory = [this](size_t reason) {
    test::FakeReader reader;
    reader.trouble("", std::string(reason, 'x'));
    EXPECT_EQ(planOf(reader).size(), 1u);
    return place_.bytes.size();
  };
  const size_t rest = kShortPlan - sizeInMemory(0);
  EXPECT_EQ(sizeInMemory(rest), kShortPlan);
  EXPECT_FALSE(std::filesystem::exists(place_.path));
  EXPECT_EQ(sizeInMemory(rest + 1), 0u);
  EXPECT_EQ(std::filesystem::file_size(place_.path), kShortPlan + 1);
}

TEST_F(SourcePlanTest, ReplacesWhatAnEarlierAttemptHasLeft) {
  const auto planMany = [this] {
    test::FakeReader reader;
    for (int number = 0; number < 2000; ++number) {
      reader.item(std::to_string(number), "Subject " + std::to_string(number));
    }
    return planOf(reader);
  };
  const Lines lines = planMany();
  const std::string bytes = test::ReadWholeFile(place_.path);
  for (const char* const name : {"plan", "plan.draft"}) {
    (void)directory_.write(name, std::string(2 * bytes.size(), 'x'));
  }
  EXPECT_EQ(planMany(), lines);
  EXPECT_EQ(test::ReadWholeFile(place_.path), bytes);
}

TEST_F(SourcePlanTest, SaysWhereAPlanBreaksOff) {
  reader_.item("21", "Plans");
  (void)plan();
  place_.bytes.pop_back();
  const Outcome<std::unique_ptr<PlanReader>> read = PlanReader::open(place_);
  ASSERT_TRUE(read.ok());
  const Outcome<std::optional<PlanEntry>> entry = (*read)->next();
  ASSERT_FALSE(entry.ok());
  EXPECT_EQ(entry.trouble().reason, "the plan of a source breaks off");
}

TEST(SourcePlanFailureTest, SaysThatItCannotBeWritten) {
  test::FakeReader reader;
  reader.trouble("", std::string(kShortPlan, 'x'));
  ItemFilter filter({});
  const Outcome<WrittenPlan> written = WritePlan(reader, filter, {}, "/nonexistent/plan", [] {});
  ASSERT_FALSE(written.ok());
  EXPECT_EQ(written.trouble().reason, "/nonexistent/plan: No such file or directory");
}

}  // namespace
}  // namespace tarn::archive
