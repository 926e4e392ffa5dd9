// Ranges of a source are planned as they are in the plan of the whole.

#include "archive/export/PlanRange.h"

#include <fstream>

#include "ClusterFixture.h"
#include "archive/sources/OpenSource.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;

class PlanRangeTest : public ClusterTest {
 protected:
  std::unique_ptr<ItemReader> open(const std::string& name, SourceKind kind) {
    ReaderOptions options;
    options.recover = true;
    Outcome<std::unique_ptr<ItemReader>> reader = OpenSource(at(name), kind, options);
    EXPECT_TRUE(reader.ok());
    return std::move(*reader);
  }

  std::vector<PlanEntry> wholeOf(const std::string& name, SourceKind kind,
                                 const FilterOptions& options = {}) {
    ItemFilter filter(options);
    const auto written = WritePlan(*open(name, kind), filter, {}, at("whole"), [] {});
    EXPECT_TRUE(written.ok());
    return entriesOf({at("whole"), written->bytes});
  }

  static std::vector<PlanEntry> entriesOf(const PlanPlace& place) {
    std::vector<PlanEntry> entries;
    const auto plan = PlanReader::open(place);
    EXPECT_TRUE(plan.ok());
    while (true) {
      const auto entry = (*plan)->next();
      EXPECT_TRUE(entry.ok());
      if (!entry.ok() || !*entry) return entries;
      entries.push_back(**entry);
    }
  }

  static std::string lineOf(const PlanEntry& entry) {
    std::string folder;
    for (const std::string& name : *entry.folder) folder += name + "/";
    return std::to_string(static_cast<int>(entry.kind)) + " " + entry.id + " " + folder + " " +
           entry.folderPath + " " + entry.name + " " + entry.reason;
  }

  // Every range of the source against the plan of the whole; how many entries that has.
  size_t compareAll(const std::string& name, SourceKind kind, const FilterOptions& options = {}) {
    const std::vector<PlanEntry> whole = wholeOf(name, kind, options);
    for (size_t first = 0; first < whole.size(); ++first) {
      for (size_t end = first + 1; end <= whole.size(); end += 1 + (end - first) / 3) {
        RangeBuilder builder;
        for (size_t entry = first; entry < end; ++entry) {
          EXPECT_TRUE(RangeBuilder::takes(whole[entry]));
          builder.add(whole[entry]);
        }
        compare(*open(name, kind), options, UnpackedRange(Packed(builder.take())), whole, first);
      }
    }
    return whole.size();
  }

  void compare(ItemReader& reader, const FilterOptions& options, const PlanRange& range,
               const std::vector<PlanEntry>& whole, size_t first) {
    ItemFilter filter(options);
    const auto written = WriteRangePlan(reader, filter, range, at("range"), [] {});
    ASSERT_TRUE(written.ok());
    ASSERT_FALSE(*written) << (*written)->reason;
    const std::vector<PlanEntry> entries = entriesOf({at("range"), {}});
    ASSERT_EQ(entries.size(), range.entries);
    for (size_t entry = 0; entry < entries.size(); ++entry) {
      EXPECT_EQ(lineOf(entries[entry]), lineOf(whole[first + entry]));
    }
  }
};

TEST_F(PlanRangeTest, FindsItemsOfAStore) {
  addStore("store.pst", 30);
  EXPECT_GE(compareAll("store.pst", SourceKind::Store), 30u);
}

TEST_F(PlanRangeTest, FindsItemsThatAFilterTakes) {
  addStore("store.pst", 30);
  FilterOptions options;
  options.subject = "Subject 2";
  EXPECT_EQ(compareAll("store.pst", SourceKind::Store, options), 6u);
}

TEST_F(PlanRangeTest, FindsItemsOfADamagedStore) {
  test::StoreBuilder store(test::PstLayout::Unicode);
  auto& inbox = store.folder("Inbox");
  auto& sent = store.folder("Sent");
  std::vector<uint32_t> ids;
  for (int number = 0; number < 6; ++number) {
    auto& message = inbox.message();
    message.subject("Same").from(u"Ann");
    // No message, one that was listed before, one of another folder.
    if (number == 2) inbox.row(0x21);
    if (number == 3) inbox.row(0x200024).row(0x200024);
  }
  sent.row(0x200024);
  sent.message().subject("Other");
  store.write(at("store.pst"));
  EXPECT_GE(compareAll("store.pst", SourceKind::Store), 7u);
}

TEST_F(PlanRangeTest, FindsItemsThatNoFolderNames) {
  test::StoreBuilder store(test::PstLayout::Unicode);
  auto& inbox = store.folder("Inbox");
  for (int number = 0; number < 4; ++number) inbox.message().subject("Same").from(u"Ann");
  inbox.withoutContentsTable();
  store.folder("Sent").message().subject("Other");
  store.write(at("store.pst"));
  EXPECT_GE(compareAll("store.pst", SourceKind::Store), 5u);
}

TEST_F(PlanRangeTest, FindsMailsOfAnMbox) {
  addMbox("box", 25);
  EXPECT_EQ(compareAll("box", SourceKind::Mbox), 25u);
}

TEST_F(PlanRangeTest, FindsMailsOfAMaildir) {
  addMaildir("maildir", 13);
  fs::create_directories(at("maildir/cur/odd"));
  (void)directory_.write("maildir/cur/odd/1", "x");
  EXPECT_EQ(compareAll("maildir", SourceKind::Maildir), 14u);
}

TEST_F(PlanRangeTest, SaysWhereASourceHasOtherItems) {
  addMbox("box", 5);
  ItemFilter filter({});
  RangeBuilder builder;
  for (const PlanEntry& entry : wholeOf("box", SourceKind::Mbox)) builder.add(entry);
  const PlanRange range = builder.take();
  const std::string bytes = test::ReadWholeFile(at("box"));
  std::ofstream(at("box"), std::ios::binary) << bytes.substr(0, bytes.size() / 2);
  const auto written =
      WriteRangePlan(*open("box", SourceKind::Mbox), filter, range, at("range"), [] {});
  ASSERT_TRUE(written.ok());
  ASSERT_TRUE(*written);
  EXPECT_EQ((*written)->reason, "has other items than when it was planned");
}

TEST_F(PlanRangeTest, SaysThatAPlanCannotBeWritten) {
  addMbox("box", 5);
  ItemFilter filter({});
  EXPECT_FALSE(
      WriteRangePlan(*open("box", SourceKind::Mbox), filter, {}, at("none/plan"), [] {}).ok());
}

TEST_F(PlanRangeTest, ReadsNonsenseAsLittle) {
  EXPECT_EQ(UnpackedRange("").entries, 0u);
  EXPECT_TRUE(UnpackedRange(std::string(16, '\xFF')).runs.size() <= 16);
}

}  // namespace
}  // namespace tarn::archive
