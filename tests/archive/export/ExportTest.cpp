#include "archive/export/Export.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>

#include "archive/export/ExportFixture.h"
#include "archive/export/Staging.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using host::ExitStatus;
using nlohmann::json;

constexpr const char* kMails =
    "From ann@example.com Wed May  1 10:34:56 2024\n"
    "From: Ann <ann@example.com>\nTo: bob@example.com\nSubject: Plans\n"
    "Date: Wed, 1 May 2024 10:34:56 +0000\nMessage-ID: <1@example.com>\n\nFirst.\n\n";

class ExportTest : public ExportFixture {
 protected:
  // A box of so many mails, and a folder with two files of mail.
  void makeSources(int mails) {
    std::string box;
    for (int number = 0; number < mails; ++number) {
      box += Mail("Subject " + std::to_string(number % 7), number, "Body");
    }
    (void)directory_.write("box", box + MailWithFile("File", "../../x"));
    (void)directory_.write("other.eml", MailWithFile("Other", "CON").substr(46));
    options_.paths = {(directory_.path() / "box").string(),
                      (directory_.path() / "other.eml").string()};
  }
};

TEST_F(ExportTest, WritesItemsAttachmentsAndManifest) {
  makeSources(1);
  EXPECT_EQ(exportTo("out"), ExitStatus::Done);
  const auto files = tree("out");
  EXPECT_TRUE(files.contains("box/2024-05-01 Subject 0/message.txt"));
  EXPECT_EQ(files.at("box/2024-05-01 File/attachments/_.._x"), "abc");
  EXPECT_EQ(files.at("other.eml/2024-05-01 Other/attachments/_CON"), "abc");
  EXPECT_TRUE(files.at("box/messages.mbox").starts_with("From "));
  EXPECT_EQ(files.size(), 8u);
  const std::vector<json> rows = manifest("out");
  ASSERT_EQ(rows.size(), 5u);
  EXPECT_EQ(rows[0]["id"], "0");
  EXPECT_EQ(rows[0]["status"], "exported");
  EXPECT_EQ(rows[1]["files"][0]["name"], "../../x");
  EXPECT_EQ(rows[1]["files"][0]["index"], 1);
  EXPECT_EQ(rows[2]["type"], "source");
  EXPECT_EQ(rows[2]["found"], 2);
  EXPECT_EQ(rows[2]["exported"], 2);
  EXPECT_EQ(Verify({options_.folder}), ExitStatus::Done);
}

TEST_F(ExportTest, GivesTheSameTreeWhateverTheNumberOfWorkers) {
  makeSources(100);
  options_.choices.catalogue = true;
  options_.choices.forms = {ExportForm::Html, ExportForm::Eml, ExportForm::Mbox, ExportForm::Json};
  EXPECT_EQ(exportTo("one"), ExitStatus::Done);
  options_.workers = 3;
  EXPECT_EQ(exportTo("three"), ExitStatus::Done);
  EXPECT_EQ(tree("one"), tree("three"));
}

TEST_F(ExportTest, GoesOnAfterBeingKilledAnywhere) {
  makeSources(70);
  EXPECT_EQ(exportTo("whole"), ExitStatus::Done);
  const auto expected = tree("whole");
  int killed = 0;
  for (int change = 1;; change += change < 8 ? 1 : 5) {
    options_.resume = false;
    if (!isKilledAt("out", change)) break;
    ++killed;
    options_.resume = true;
    // Once more on the way.
    (void)isKilledAt("out", change / 2 + 1);
    options_.step = [] {};
    EXPECT_EQ(exportTo("out"), ExitStatus::Done);
    EXPECT_EQ(tree("out"), expected) << "killed at change " << change;
    fs::remove_all(directory_.path() / "out");
  }
  EXPECT_GT(killed, 20);
}

TEST_F(ExportTest, TrustsNothingThatHasChangedMeanwhile) {
  makeSources(70);
  EXPECT_EQ(exportTo("whole"), ExitStatus::Done);
  // The last change is the removal of the staging.
  int last = 1;
  options_.step = [&] { ++last; };
  EXPECT_EQ(exportTo("counted"), ExitStatus::Done);
  ASSERT_TRUE(isKilledAt("out", last - 2));
  fs::path victim;
  for (const auto& entry : fs::recursive_directory_iterator(directory_.path() / "out" / "box")) {
    if (entry.path().filename() == "message.txt") victim = entry.path();
  }
  ASSERT_FALSE(victim.empty());
  std::ofstream(victim) << "changed";
  options_.step = [] {};
  options_.resume = true;
  EXPECT_EQ(exportTo("out"), ExitStatus::Done);
  EXPECT_EQ(tree("out"), tree("whole"));
}

TEST_F(ExportTest, LosesOneItemToACrashAndOneToAHang) {
  std::string box;
  while (box.size() < 200) box += Mail("A", 0, std::string(200 - Mail("A", 0, "").size(), 'x'));
  ASSERT_EQ(box.size(), 200u);
  box += Mail("B", 1, "body") + Mail("C", 2, "body");
  options_.paths = {directory_.write("box", box).string()};
  options_.program = CRASHING_WORKER;
  options_.seconds = 1;
  EXPECT_EQ(exportTo("out"), ExitStatus::Failed);
  const std::vector<json> rows = manifest("out");
  ASSERT_EQ(rows.size(), 4u);
  EXPECT_EQ(rows[0]["status"], "failed");
  EXPECT_EQ(rows[0]["reason"], "the process that read it was killed by signal 11");
  EXPECT_EQ(rows[1]["id"], "200");
  EXPECT_EQ(rows[1]["reason"], "took longer than 1 seconds");
  EXPECT_EQ(rows[2]["status"], "exported");
  EXPECT_EQ(rows[3]["failed"], 2);
}

TEST_F(ExportTest, NamesCopiesAndLeavesThemOutWhereAsked) {
  const std::string mail = MailWithFile("Same", "a.bin");
  options_.paths = {directory_.write("box", mail + mail).string()};
  EXPECT_EQ(exportTo("all"), ExitStatus::Done);
  std::vector<json> rows = manifest("all");
  EXPECT_FALSE(rows[0].contains("copyOf"));
  EXPECT_EQ(rows[1]["copyOf"]["id"], "0");
  EXPECT_EQ(rows[1]["files"].size(), 3u);
  options_.dedupe = true;
  EXPECT_EQ(exportTo("first"), ExitStatus::Done);
  rows = manifest("first");
  EXPECT_EQ(rows[1]["copyOf"]["id"], "0");
  EXPECT_EQ(rows[1]["files"].size(), 0u);
  EXPECT_EQ(tree("first").size(), 4u);
  EXPECT_EQ(Verify({options_.folder}), ExitStatus::Done);
}

TEST_F(ExportTest, RefusesFoldersThatAreInUse) {
  makeSources(2);
  fs::create_directory(directory_.path() / "mine");
  std::ofstream(directory_.path() / "mine" / "letter") << "x";
  EXPECT_TRUE(failureOf("mine").ends_with("is neither empty nor an export"));
  ASSERT_TRUE(isKilledAt("out", 3));
  EXPECT_TRUE(
      failureOf("out").ends_with("holds an export that was ended early; --resume goes on with it"));
  options_.resume = true;
  options_.choices.attachments = false;
  EXPECT_TRUE(failureOf("out").ends_with(
      "the export there was begun with other files or options: --resume goes on with the same"));
  options_.choices.attachments = true;
  EXPECT_EQ(exportTo("out"), ExitStatus::Done);
  EXPECT_EQ(exportTo("out"), ExitStatus::Done);
  options_.resume = false;
  EXPECT_TRUE(failureOf("out").ends_with(
      "holds a finished export; name another folder, or remove it first"));
}

TEST_F(ExportTest, RefusesASourceThatHasChangedSinceItWasBegun) {
  makeSources(100);
  // Each entry is a change, and each folder that is put into its place: this is in a later batch.
  ASSERT_TRUE(isKilledAt("out", 150));
  std::ofstream(directory_.path() / "box", std::ios::app) << Mail("New", 1000, "More");
  options_.resume = true;
  EXPECT_TRUE(failureOf("out").ends_with(
      "has changed since the export was begun; export into a new folder"));
}

TEST_F(ExportTest, SaysWhenNothingMoreCanBeWritten) {
  makeSources(40);
  const pid_t child = fork();
  if (child == 0) {
    leaveNoProfiles();
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small = {4096, 4096};
    setrlimit(RLIMIT_FSIZE, &small);
    _exit(failureOf("out").ends_with("File too large; --resume goes on with what is finished") ? 7
                                                                                               : 0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(WEXITSTATUS(status), 7);
  options_.resume = true;
  EXPECT_EQ(exportTo("out"), ExitStatus::Done);
  EXPECT_EQ(Verify({options_.folder}), ExitStatus::Done);
}

TEST_F(ExportTest, ReportsSourcesThatCannotBeRead) {
  options_.paths = {directory_.write("box", kMails).string(),
                    (directory_.path() / "none").string()};
  EXPECT_EQ(exportTo("out"), ExitStatus::Usage);
  const std::vector<json> rows = manifest("out");
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[2]["found"], 0);
  EXPECT_EQ(rows[2]["sha256"], nullptr);
  EXPECT_FALSE(rows[2]["reason"].get<std::string>().empty());
}

TEST_F(ExportTest, VerifyFindsEachKindOfDamage) {
  makeSources(3);
  ASSERT_EQ(exportTo("out"), ExitStatus::Done);
  const fs::path out = directory_.path() / "out";
  const fs::path file = out / "box" / "2024-05-01 Subject 1" / "message.txt";
  const std::string bytes = test::ReadWholeFile(file);
  const auto rewrite = [&](const std::string& text) { std::ofstream(file) << text; };
  rewrite(bytes + "x");
  EXPECT_EQ(Verify({out.string()}), ExitStatus::Failed);
  std::string changed = bytes;
  changed.front() ^= 1;
  rewrite(changed);
  EXPECT_EQ(Verify({out.string()}), ExitStatus::Failed);
  fs::remove(file);
  EXPECT_EQ(Verify({out.string()}), ExitStatus::Failed);
  rewrite(bytes);
  EXPECT_EQ(Verify({out.string()}), ExitStatus::Done);
  std::ofstream(out / "box" / "extra") << "x";
  EXPECT_EQ(Verify({out.string()}), ExitStatus::Failed);
  fs::remove(out / "box" / "extra");
  std::ofstream(out / "manifest.jsonl", std::ios::app) << "{\"type\":";
  EXPECT_EQ(Verify({out.string()}), ExitStatus::Failed);
  EXPECT_THROW((void)Verify({directory_.path().string()}), host::Failure);
}

TEST_F(ExportTest, MakesNoPdfWithoutHelpers) {
  makeSources(1);
  options_.choices.forms = {ExportForm::Pdf};
  options_.choices.pages.helpers = directory_.path().string();
  EXPECT_TRUE(failureOf("out").starts_with("no pages can be made")) << failureOf("out");
  EXPECT_FALSE(fs::exists(directory_.path() / "out"));
}

#ifdef HELPERS_PATH
TEST_F(ExportTest, WritesPdfs) {
  makeSources(3);
  options_.choices.forms = {ExportForm::Pdf, ExportForm::Text};
  options_.choices.pages.helpers = HELPERS_PATH;
  options_.seconds = 600;
  EXPECT_EQ(exportTo("one"), ExitStatus::Done);
  int pdfs = 0;
  for (const json& row : manifest("one")) {
    if (row["type"] != "item") continue;
    EXPECT_EQ(row["status"], "exported");
    for (const json& file : row["files"]) {
      if (file["role"] != "pdf") continue;
      ++pdfs;
      const std::string path = file["path"];
      EXPECT_TRUE(path.ends_with("/message.pdf")) << path;
      EXPECT_TRUE(tree("one")[path].starts_with("%PDF-")) << path;
    }
  }
  EXPECT_EQ(pdfs, 5);
  EXPECT_EQ(Verify({options_.folder}), ExitStatus::Done);
  options_.workers = 2;
  EXPECT_EQ(exportTo("two"), ExitStatus::Done);
  EXPECT_EQ(tree("two"), tree("one"));
}

#endif

}  // namespace
}  // namespace tarn::archive
