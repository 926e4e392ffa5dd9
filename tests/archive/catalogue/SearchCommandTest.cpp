#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "archive/catalogue/Catalogue.h"
#include "archive/catalogue/SampleItems.h"
#include "support/TempDirectory.h"

namespace tarn::archive {
namespace {

// The program, on an export's catalogue.
class SearchCommandTest : public testing::Test {
 protected:
  void SetUp() override {
    CatalogueItem parent = Mail("200024", "Outer", "with something attached");
    parent.source = "/mail/box.pst";
    parent.folder = {"Top", "Inbox"};
    CatalogueItem other = Mail("3", "東京\tの会議\x1B[2J", "予算 figures\nnext line");
    other.fields.sent = Moment{1735689600, std::nullopt};
    other.fields.from = {"", "kei@example.jp"};
    auto writer = CatalogueWriter::create(directory_.path() / kCatalogueName);
    ASSERT_TRUE(writer.ok());
    for (const CatalogueItem& item : {parent, FullItem(), other}) {
      ASSERT_FALSE((*writer)->add(item).has_value());
    }
    ASSERT_FALSE((*writer)->finish().has_value());
    setenv("TZ", "UTC", 1);
  }

  // What the program says, on both streams, and its exit status when that is not 0.
  std::string search(const std::string& words) const {
    return run("search " + directory_.path().string() + " " + words);
  }

  std::string run(const std::string& words) const {
    return runProgram(TARNMAIL_SEARCH " " + words);
  }

  std::string runProgram(const std::string& command) const {
    std::FILE* const pipe = popen((command + " 2>&1").c_str(), "r");
    std::string said;
    char room[4096];
    while (const size_t got = std::fread(room, 1, sizeof(room), pipe)) said.append(room, got);
    const int status = pclose(pipe);
    if (WEXITSTATUS(status) != 0) said += "status " + std::to_string(WEXITSTATUS(status));
    // The folder has another name each time.
    const std::string folder = directory_.path().string();
    for (size_t at = said.find(folder); at != std::string::npos; at = said.find(folder)) {
      said.replace(at, folder.size(), "DIR");
    }
    return said;
  }

  test::TempDirectory directory_;
};

TEST_F(SearchCommandTest, PartsWhatItTellsWithTabs) {
  EXPECT_EQ(search("figures budget"),
            "200024/1\tTop/Inbox\t2024-05-01 10:34\tAnn Example\tBudget for May\tsubject, body\t"
            "The figures are in the plan.\tDIR/box/Inbox/Budget/message.html\n");
  // Nothing of a mail reaches the terminal as it is.
  EXPECT_EQ(search("予算"),
            "3\t\t2025-01-01 00:00\tkei@example.jp\t東京 の会議\xEF\xBF\xBD[2J\tbody\t"
            "予算 figures next line\tDIR/box/3/message.html\n");
  EXPECT_EQ(search("travel"),
            "200024/1\tTop/Inbox\t2024-05-01 10:34\tAnn Example\tBudget for May\t"
            "attachment plan.txt\tTravel costs nothing.\tDIR/box/Inbox/Budget/message.html\n");
}

TEST_F(SearchCommandTest, GivesJson) {
  EXPECT_EQ(search("--json '\"travel costs\" budget'"),
            R"({"source":"/mail/box.pst","id":"200024/1","parent":"200024","folder":"Top/Inbox",)"
            R"("class":"IPM.Note","subject":"Budget for May","from":{"name":"Ann Example",)"
            R"("address":"ann@example.com"},"to":[{"name":"Bob","address":"bob@example.com"},)"
            R"({"name":"","address":"carl@example.com"}],"cc":[{"name":"Dora","address":""}],)"
            R"("bcc":[{"name":"Emil","address":"emil@example.com"}],)"
            R"("sent":"2024-05-01T10:34:56Z","received":"2024-05-01T10:35:00Z","attachments":2,)"
            R"("size":4711,"status":"partial","path":"DIR/box/Inbox/Budget/message.html",)"
            R"("found":[{"where":"subject","text":"Budget for May","marks":[[0,6]]},)"
            R"({"where":"attachment","name":"plan.txt","index":1,"text":"Travel costs nothing.",)"
            R"("marks":[[0,12]]}]})"
            "\n");
  // Marks are counted in characters.
  EXPECT_NE(search("--json 会議").find(R"("marks":[[4,6]])"), std::string::npos);
}

TEST_F(SearchCommandTest, Filters) {
  const std::string box = "200024/1\tTop/Inbox";
  const std::string nothing = "tarnmail: nothing found\n";
  EXPECT_EQ(search("--since 2024-12 figures").substr(0, 4), "3\t\t2");
  EXPECT_EQ(search("--until 2024-12 figures").substr(0, 18), box);
  EXPECT_EQ(search("--has-attachment figures").substr(0, 18), box);
  EXPECT_EQ(search("--folder top/inbox figures").substr(0, 18), box);
  EXPECT_EQ(search("--from KEI figures").substr(0, 4), "3\t\t2");
  EXPECT_EQ(search("--from office figures").substr(0, 18), box);
  EXPECT_EQ(search("--to emil figures").substr(0, 18), box);
  EXPECT_EQ(search("--subject May figures").substr(0, 18), box);
  EXPECT_EQ(search("--class IPM.Contact figures"), nothing);
}

TEST_F(SearchCommandTest, StopsAtALimit) {
  EXPECT_EQ(
      search("--limit 1 figures").find("there are more; --limit 0 shows all") == std::string::npos,
      false);
  EXPECT_EQ(search("--limit 2 figures").find("there are more"), std::string::npos);
  EXPECT_EQ(search("--limit -1 figures").substr(0, 42),
            "tarnmail: --limit: -1 is no number from 0;");
}

TEST_F(SearchCommandTest, SaysWhatIsWrong) {
  EXPECT_EQ(search("--json -- '!!'"), "tarnmail: there is no word to look for\nstatus 2");
  EXPECT_EQ(run("search /missing word"),
            "tarnmail: /missing: there is no catalogue.sqlite\nstatus 2");
  directory_.write(kCatalogueName, "damaged");
  EXPECT_EQ(search("word"),
            "tarnmail: DIR: the catalogue cannot be read: file is not a database\nstatus 2");
}

// Another program reads what the tables are told to hold.
TEST_F(SearchCommandTest, IsAnOrdinaryDatabase) {
  const auto ask = [&](const std::string& question) {
    return runProgram("sqlite3 " + (directory_.path() / kCatalogueName).string() + " \"" +
                      question + "\"");
  };
  EXPECT_EQ(ask("PRAGMA integrity_check"), "ok\n");
  EXPECT_EQ(ask("INSERT INTO words(words) VALUES('integrity-check')"), "");
  EXPECT_EQ(ask("SELECT path FROM files JOIN items USING(item) WHERE role='attachment'"
                " AND name LIKE '%.txt' AND sent >= '2024-05'"),
            "box/Inbox/Budget/attachments/plan.txt\n");
  EXPECT_EQ(ask("SELECT folder, subject FROM items WHERE item IN (SELECT rowid FROM words"
                " WHERE words MATCH 'subject:budget AND attachments:travel')"),
            "Top/Inbox|Budget for May\n");
}

TEST_F(SearchCommandTest, MarksWordsOnATerminal) {
  const std::string folder = directory_.path().string();
  std::FILE* const pipe = popen(("script -qec '" TARNMAIL_SEARCH " search " + folder +
                                 " figures budget' /dev/null" + " </dev/null")
                                    .c_str(),
                                "r");
  std::string shown;
  char room[4096];
  while (const size_t got = std::fread(room, 1, sizeof(room), pipe)) shown.append(room, got);
  EXPECT_EQ(pclose(pipe), 0);
  EXPECT_EQ(shown,
            "\x1B[1mBudget\x1B[0m for May\r\n"
            "    2024-05-01 10:34  Ann Example  Top/Inbox\r\n"
            "    attached to: Outer\r\n"
            "    in subject, body\r\n"
            "    The \x1B[1mfigures\x1B[0m are in the plan.\r\n"
            "    " +
                folder + "/box/Inbox/Budget/message.html\r\n");
}

}  // namespace
}  // namespace tarn::archive
