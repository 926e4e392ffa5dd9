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

}  // namespace
}  // namespace tarn::archive
