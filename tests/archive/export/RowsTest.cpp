#include <gtest/gtest.h>

#include "archive/export/ManifestRows.h"
#include "archive/export/Progress.h"
#include "archive/export/SourceSum.h"
#include "support/TempDirectory.h"

namespace tarn::archive {
namespace {

TEST(JoinedReasonsTest, TellsEachOnceAndOfManyTheFirst) {
  EXPECT_EQ(JoinedReasons({"a", "b", "a"}), "a; b");
  std::vector<std::string> many;
  for (int number = 0; number < 12; ++number) many.push_back(std::to_string(number));
  EXPECT_EQ(JoinedReasons(many), "0; 1; 2; 3; 4; 5; 6; 7; 8; 9; and 2 more");
}

TEST(JournalLineTest, IsTheRowOfTheManifestWithWhatTheJournalAloneKnows) {
  ItemRow row;
  row.item.source = "box";
  row.item.id = "2/1";
  row.item.parent = "2";
  row.item.folder = {"In", "Old"};
  row.item.fields.messageClass = "IPM.Note";
  row.item.fields.subject = "a\"b";
  row.item.status = ExportStatus::Partial;
  row.reasons = {"lost"};
  row.item.files.push_back({"box/a", "attachment", 3, "00", "a", 1});
  row.fingerprint = "ff";
  row.mbox = "box/messages.mbox";
  row.mboxBytes = 7;
  row.catalogueBytes = 9;
  EXPECT_EQ(JournalLine(row),
            R"({"type":"item","source":"box","id":"2/1","parent":"2","folder":"In/Old",)"
            R"("class":"IPM.Note","subject":"a\"b","status":"partial","reason":"lost",)"
            R"("files":[{"path":"box/a","role":"attachment","bytes":3,"sha256":"00","name":"a",)"
            R"("index":1}],"fingerprint":"ff","mbox":"box/messages.mbox","mboxBytes":7,)"
            R"("catalogueBytes":9})"
            "\n");
}

TEST(ProgressTextTest, TellsWhatIsKnown) {
  EXPECT_EQ(ProgressText(0, 0, 0, 0), "0 items, 0 MB");
  EXPECT_EQ(ProgressText(100, 400, 50'000'000, 10'000),
            "100 of 400 items, 50 MB, 5 MB/s, 0:00:30 left");
  EXPECT_EQ(ProgressText(4, 4, 50'000, 100), "4 items, 0 MB");
  EXPECT_EQ(ProgressText(400, 400, 50'000'000, 10'000), "400 items, 50 MB, 5 MB/s");
}

TEST(SumOfSourceTest, IsThatOfTheLinesOfAMaildirsFiles) {
  const test::TempDirectory directory;
  for (const char* const name : {"cur", "new", "tmp"}) {
    std::filesystem::create_directory(directory.path() / name);
  }
  (void)directory.write("cur/b", "abc");
  (void)directory.write("cur/a", "abc");
  (void)directory.write("tmp/c", "no");
  int beats = 0;
  const Outcome<FileSum> sum = SumOfSource(directory.path(), SourceKind::Maildir, [&] { ++beats; });
  ASSERT_TRUE(sum.ok());
  Sha256 lines;
  for (const char* const name : {"cur/a", "cur/b"}) {
    lines.add("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad  ");
    lines.add(std::string(name) + "\n");
  }
  EXPECT_EQ(sum->sha256, lines.digest());
  EXPECT_EQ(sum->bytes, 6u);
  EXPECT_EQ(beats, 2);
}

// Of a Maildir with a folder below it, and a file that opens and cannot be read.
class MaildirSumTest : public ::testing::Test {
 protected:
  MaildirSumTest() {
    for (const char* const name : {"cur", "new", "tmp", ".Sent", ".Sent/cur", ".Sent/new"}) {
      std::filesystem::create_directory(directory_.path() / name);
    }
    (void)directory_.write("cur/a", "abc");
    (void)directory_.write(".Sent/cur/b", "abc");
  }
  std::string stamp() const { return StampOfSource(directory_.path(), SourceKind::Maildir); }

  test::TempDirectory directory_;
};

TEST_F(MaildirSumTest, NamesWhatCannotBeRead) {
  std::filesystem::create_symlink("/proc/self/mem", directory_.path() / "cur" / "z");
  const Outcome<FileSum> sum = SumOfSource(directory_.path(), SourceKind::Maildir, [] {});
  ASSERT_TRUE(sum.ok());
  constexpr const char* kAbc = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad  ";
  Sha256 lines;
  lines.add(kAbc + std::string(".Sent/cur/b\n") + kAbc + "cur/a\n" + "unreadable  cur/z\n");
  EXPECT_EQ(sum->sha256, lines.digest());
}

TEST_F(MaildirSumTest, IsStampedWithAllItsFiles) {
  const std::string before = stamp();
  EXPECT_FALSE(before.empty());
  EXPECT_EQ(stamp(), before);
  (void)directory_.write("tmp/c", "being delivered");
  EXPECT_EQ(stamp(), before);
  (void)directory_.write(".Sent/new/c", "new");
  const std::string more = stamp();
  EXPECT_NE(more, before);
  (void)directory_.write(".Sent/cur/b", "abcd");
  EXPECT_NE(stamp(), more);
}

}  // namespace
}  // namespace tarn::archive
