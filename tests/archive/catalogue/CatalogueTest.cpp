#include "archive/catalogue/Catalogue.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "archive/catalogue/SampleItems.h"
#include "support/TempDirectory.h"

namespace tarn::archive {
namespace {

class CatalogueTest : public testing::Test {
 protected:
  std::filesystem::path path() const { return directory_.path() / kCatalogueName; }

  // Writes the items and puts the catalogue into its place.
  void write(const std::vector<CatalogueItem>& items) {
    auto writer = CatalogueWriter::create(path());
    ASSERT_TRUE(writer.ok()) << writer.trouble().reason;
    for (const CatalogueItem& item : items) ASSERT_FALSE((*writer)->add(item).has_value());
    ASSERT_FALSE((*writer)->finish().has_value());
  }

  // All rows, "|" between values and after each row a line end, as the library itself gives them.
  std::string query(const std::string& statement) {
    sqlite3* database = nullptr;
    EXPECT_EQ(sqlite3_open_v2(path().c_str(), &database, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
    std::string rows;
    char* error = nullptr;
    const auto row = [](void* out, int count, char** values, char**) {
      for (int at = 0; at < count; ++at) {
        if (at != 0) *static_cast<std::string*>(out) += '|';
        *static_cast<std::string*>(out) += values[at] == nullptr ? "NULL" : values[at];
      }
      *static_cast<std::string*>(out) += '\n';
      return 0;
    };
    sqlite3_exec(database, statement.c_str(), row, &rows, &error);
    if (error != nullptr) rows += error;
    sqlite3_free(error);
    sqlite3_close(database);
    return rows;
  }

  test::TempDirectory directory_;
};

TEST_F(CatalogueTest, HasATableForEachThing) {
  write({FullItem()});
  EXPECT_EQ(query("PRAGMA integrity_check"), "ok\n");
  EXPECT_EQ(query("PRAGMA user_version"), "1\n");
  EXPECT_EQ(query("SELECT * FROM items"),
            "1|/mail/box.pst|200024/1|200024|Top/Inbox|IPM.Note|Budget for May|Ann Example|"
            "ann@example.com|one@example.com|2024-05-01T10:34:56Z|2024-05-01T10:35:00Z|4711|2|"
            "partial|an attachment is damaged\n");
  EXPECT_EQ(query("SELECT * FROM recipients"),
            "1|1|sender|Office|office@example.com\n"
            "1|2|to|Bob|bob@example.com\n"
            "1|3|to||carl@example.com\n"
            "1|4|cc|Dora|\n"
            "1|5|bcc|Emil|emil@example.com\n");
  EXPECT_EQ(query("SELECT * FROM files"),
            "1|1|box/Inbox/Budget/message.html|html|1234|" + std::string(64, 'a') +
                "|NULL|NULL\n1|2|box/Inbox/Budget/attachments/plan.txt|attachment|9|" +
                std::string(64, 'b') + "|plan.txt|1\n");
  EXPECT_EQ(query("SELECT * FROM texts"),
            "1|0|NULL|The figures are in the plan.\n"
            "1|1|plan.txt|Travel costs nothing.\n"
            "1|2|torn.pdf|\n");
}

TEST_F(CatalogueTest, LeavesOutWhatAnItemDoesNotHave) {
  write({CatalogueItem()});
  EXPECT_EQ(query("SELECT * FROM items"), "1|||NULL|||||||NULL|NULL|NULL|0|exported|NULL\n");
  EXPECT_EQ(query("SELECT count(*) FROM recipients"), "0\n");
  EXPECT_EQ(query("SELECT count(*) FROM texts"), "0\n");
}

TEST_F(CatalogueTest, FindsWordsOfEachField) {
  write({FullItem(), Mail("2", "Lunch", "At noon, Zoë")});
  const auto found = [&](const std::string& wanted) {
    return query("SELECT rowid FROM words WHERE words MATCH '" + wanted + "' ORDER BY rowid");
  };
  EXPECT_EQ(found("subject:budget"), "1\n");
  EXPECT_EQ(found("sender:office"), "1\n");
  EXPECT_EQ(found("recipients:emil"), "1\n");
  EXPECT_EQ(found("body:figures"), "1\n");
  EXPECT_EQ(found("attachments:travel"), "1\n");
  EXPECT_EQ(found("attachments:torn"), "1\n");
  EXPECT_EQ(found("ann"), "1\n2\n");
  EXPECT_EQ(found("zoe"), "2\n");
  EXPECT_EQ(found("nobody"), "");
}

TEST_F(CatalogueTest, FindsPairsOfCharacters) {
  write({Mail("1", "会議のお知らせ", "東京都で"), Mail("2", "안녕하세요", "हिन्दी में")});
  EXPECT_EQ(query("SELECT rowid FROM words WHERE words MATCH '\"京都\"'"), "1\n");
  EXPECT_EQ(query("SELECT rowid FROM words WHERE words MATCH '\"하세 세요\"'"), "2\n");
  // Vowels of Hindi are marks, and part of the word.
  EXPECT_EQ(query("SELECT rowid FROM words WHERE words MATCH '\"हिन्दी\"'"), "2\n");
  EXPECT_EQ(query("SELECT rowid FROM words WHERE words MATCH '\"न\"'"), "");
}

TEST_F(CatalogueTest, IsTheSameForTheSameItems) {
  std::vector<CatalogueItem> items{FullItem()};
  for (int each = 0; each < 300; ++each) {
    items.push_back(Mail(std::to_string(each), "Subject " + std::to_string(each * 7919),
                         "Some text with number " + std::to_string(each % 13)));
  }
  write(items);
  const std::string first = test::ReadWholeFile(path());
  write(items);
  EXPECT_TRUE(first == test::ReadWholeFile(path()));
  EXPECT_EQ(directory_.listing(), kCatalogueName);
}

TEST_F(CatalogueTest, CutsLongTextsBetweenCharacters) {
  std::string text = "begin ";
  while (text.size() <= kMostCatalogueText + 100) text += "日";
  CatalogueItem item = Mail("1", "Long", text);
  item.attachments = {{1, "long.txt", std::string(kMostCatalogueText, 'x') + " beyond"}};
  write({item});
  // 6 letters, and as many of 3 bytes as fit.
  EXPECT_EQ(query("SELECT length(CAST(text AS BLOB)) FROM texts WHERE attachment=0"),
            std::to_string(6 + (kMostCatalogueText - 6) / 3 * 3) + "\n");
  EXPECT_EQ(query("SELECT length(text) FROM texts WHERE attachment=1"),
            std::to_string(kMostCatalogueText) + "\n");
  EXPECT_EQ(query("SELECT rowid FROM words WHERE words MATCH 'beyond'"), "");
}

TEST_F(CatalogueTest, LeavesNothingWithoutFinish) {
  {
    auto writer = CatalogueWriter::create(path());
    ASSERT_TRUE(writer.ok());
    EXPECT_FALSE((*writer)->add(FullItem()).has_value());
    EXPECT_EQ(directory_.listing(), "catalogue.sqlite.new");
  }
  EXPECT_EQ(directory_.listing(), "");
}

TEST_F(CatalogueTest, ReplacesLeftovers) {
  directory_.write("catalogue.sqlite.new", "of a killed one, and no database at all");
  directory_.write("catalogue.sqlite", "an older one");
  write({FullItem()});
  EXPECT_EQ(query("SELECT count(*) FROM items"), "1\n");
  EXPECT_EQ(directory_.listing(), kCatalogueName);
}

TEST_F(CatalogueTest, SaysWhereItCannotBeWritten) {
  const auto writer = CatalogueWriter::create(directory_.path() / "missing" / "c.sqlite");
  ASSERT_FALSE(writer.ok());
  EXPECT_EQ(writer.trouble().reason, (directory_.path() / "missing" / "c.sqlite.new").string() +
                                         " cannot be written: unable to open database file");
}

// A file that may not grow is to the writer what a full disk is.
TEST_F(CatalogueTest, SaysWhenTheDiskIsFull) {
  auto writer = CatalogueWriter::create(path());
  ASSERT_TRUE(writer.ok());
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const rlimit small{1 << 20, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  std::optional<Trouble> trouble;
  for (int each = 0; each < 40 && !trouble; ++each) {
    trouble = (*writer)->add(Mail(std::to_string(each), "s", std::string(1 << 20, 'x')));
  }
  if (!trouble) trouble = (*writer)->finish();
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, SIG_DFL);
  ASSERT_TRUE(trouble.has_value());
  EXPECT_TRUE(trouble->reason.starts_with(path().string() + ".new cannot be written: "));
  EXPECT_EQ((*writer)->finish()->reason, trouble->reason);
  writer->reset();
  EXPECT_EQ(directory_.listing(), "");
}

TEST_F(CatalogueTest, SaysWhereItCannotBePut) {
  std::filesystem::create_directories(path() / "in the way");
  auto writer = CatalogueWriter::create(path());
  ASSERT_TRUE(writer.ok());
  ASSERT_FALSE((*writer)->add(FullItem()).has_value());
  const std::optional<Trouble> trouble = (*writer)->finish();
  ASSERT_TRUE(trouble.has_value());
  EXPECT_EQ(trouble->reason, path().string() + " cannot be written: Is a directory");
  // Nor is anything done after a trouble.
  EXPECT_EQ((*writer)->add(FullItem())->reason, trouble->reason);
  EXPECT_EQ((*writer)->finish()->reason, trouble->reason);
}

}  // namespace
}  // namespace tarn::archive
