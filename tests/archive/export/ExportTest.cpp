#include "archive/export/Export.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>

#include "ReadMailPdf.h"
#include "archive/UnreadableMails.h"
#include "archive/export/ExportFixture.h"
#include "archive/export/Staging.h"
#include "support/msg/MsgBuilder.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using host::ExitStatus;
using nlohmann::json;

constexpr const char* kMails =
    "From ann@example.com Wed May  1 10:34:56 2024\n"
    "From: Ann <ann@example.com>\nTo: bob@example.com\nSubject: Plans\n"
    "Date: Wed, 1 May 2024 10:34:56 +0000\nMessage-ID: <1@example.com>\n\nFirst.\n\n";

using ExportTest = ExportFixture;

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

// Workers tell of several items at once: those of which a worker had not told are done again.
TEST_F(ExportTest, LosesNothingButTheItemsOfCrashes) {
  constexpr int kItems = 40;
  constexpr size_t kSize = 250;
  std::string box;
  for (int number = 0; number < kItems; ++number) {
    const size_t rest = kSize - Mail("A", number, "").size();
    box += Mail("A", number, std::string(rest, 'x'));
  }
  options_.paths = {directory_.write("box", box).string()};
  options_.program = CRASHING_WORKER;
  EXPECT_EQ(exportTo("out"), ExitStatus::Failed);
  const std::vector<json> rows = manifest("out");
  ASSERT_EQ(rows.size(), kItems + 1u);
  std::string expected;
  for (size_t number = 0; number < kItems; ++number) {
    const bool isLost = number == 0 || number == 10 || number == 29 || number == 30;
    EXPECT_EQ(rows[number]["id"], std::to_string(number * kSize));
    EXPECT_EQ(rows[number]["status"], isLost ? "failed" : "exported") << number;
    if (!isLost) expected += box.substr(number * kSize, kSize);
  }
  EXPECT_EQ(rows.back()["failed"], 4);
  EXPECT_EQ(tree("out")["box/messages.mbox"], expected);
  EXPECT_EQ(Verify({options_.folder}), ExitStatus::Done);
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

// Its files would be all that is left of a mail that is there wholly too.
TEST_F(ExportTest, TakesNothingDamagedForTheOriginalOfACopy) {
  test::MsgBuilder msg;
  msg.text(0x001A, u"IPM.Note").text(0x0037, u"Plan").text(0x1035, u"<1@example.com>");
  msg.recipient(u"Bob", u"bob@example.com").recipient(u"Carl", u"carl@example.com");
  const std::string whole = msg.write();
  std::string damaged = whole;
  const std::string_view last(
      "_\0#\0"
      "0\0"
      "0\0"
      "0\0"
      "0\0"
      "0\0"
      "0\0"
      "0\0"
      "1",
      19);
  const size_t name = damaged.find(last);
  ASSERT_NE(name, std::string::npos);
  damaged[name] = 'x';
  options_.dedupe = true;
  options_.paths = {directory_.write("a.msg", damaged).string(),
                    directory_.write("b.msg", whole).string(),
                    directory_.write("c.msg", whole).string()};
  EXPECT_EQ(exportTo("out"), ExitStatus::Done);
  const std::vector<json> rows = manifest("out");
  ASSERT_EQ(rows.size(), 6u);
  EXPECT_EQ(rows[0]["status"], "partial");
  EXPECT_FALSE(rows[0]["files"].empty());
  EXPECT_EQ(rows[2]["status"], "exported");
  EXPECT_FALSE(rows[2].contains("copyOf"));
  EXPECT_FALSE(rows[2]["files"].empty());
  EXPECT_EQ(rows[4]["copyOf"]["source"], options_.paths[1]);
  EXPECT_TRUE(rows[4]["files"].empty());
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

// What a folder has is no less a loss than what the command line names.
TEST_F(ExportTest, ReportsMailFilesOfFoldersThatCannotBeRead) {
  fs::create_directory(directory_.path() / "in");
  (void)directory_.write("in/box", kMails);
  (void)directory_.write("in/lost.pst", "no store any more");
  (void)directory_.write("in/notes.txt", "Hello");
  (void)directory_.write("in/secret", EncryptedStore());
  (void)directory_.write("in/letter.doc", LetterOfOtherProgram());
  (void)directory_.write("in/letter.msg", LetterOfOtherProgram());
  options_.paths = {(directory_.path() / "in").string()};
  EXPECT_EQ(exportTo("out"), ExitStatus::Failed);
  std::string reasons;
  for (const json& row : manifest("out")) {
    if (!row.contains("reason")) continue;
    reasons += fs::path(row["source"].get<std::string>()).filename().string() + ": " +
               row["reason"].get<std::string>() + "\n";
  }
  EXPECT_EQ(reasons,
            "letter.msg: the file is a compound file and no message\n"
            "lost.pst: not a mail file, though it is called one: neither a store, an MSG file, a "
            "winmail.dat, a mail nor an mbox\n"
            "secret: the store is encrypted\n");
}

TEST_F(ExportTest, ExportsAMaildirOfWhichOneFileCannotBeRead) {
  for (const char* const name : {"md", "md/cur", "md/new"}) {
    fs::create_directory(directory_.path() / name);
  }
  (void)directory_.write("md/cur/1", Mail("One", 1, "Body").substr(46));
  (void)directory_.write("md/cur/2", Mail("Two", 2, "Body").substr(46));
  fs::create_symlink("/proc/self/mem", directory_.path() / "md" / "cur" / "3");
  options_.paths = {(directory_.path() / "md").string()};
  EXPECT_EQ(exportTo("out"), ExitStatus::Failed);
  const json row = manifest("out").back();
  EXPECT_EQ(row["type"], "source");
  EXPECT_EQ(row["exported"], 2);
  EXPECT_EQ(row["sha256"].get<std::string>().size(), 64u);
}

TEST_F(ExportTest, MakesNothingOfPathsThatAreNone) {
  options_.paths = {(directory_.path() / "none").string()};
  EXPECT_EQ(exportTo("out"), ExitStatus::Usage);
  EXPECT_FALSE(fs::exists(directory_.path() / "out"));
}

TEST_F(ExportTest, VerifyMissesRowsOfTheManifest) {
  makeSources(3);
  options_.choices.forms = {ExportForm::Mbox};
  options_.choices.attachments = false;
  ASSERT_EQ(exportTo("out"), ExitStatus::Done);
  const fs::path path = directory_.path() / "out" / "manifest.jsonl";
  const std::string whole = test::ReadWholeFile(path);
  const auto without = [&](const std::string& begin, const std::string& end) {
    std::string less = whole;
    const size_t from = less.find(begin);
    if (from != std::string::npos) less.erase(from, less.find(end, from) - from);
    std::ofstream(path) << less;
    return Verify({options_.folder});
  };
  EXPECT_EQ(without("none", "none"), ExitStatus::Done);
  const std::string second = whole.substr(whole.find('\n') + 1);
  EXPECT_EQ(without(second.substr(0, second.find('\n') + 1), second.substr(second.find('\n') + 1)),
            ExitStatus::Failed);
  const std::string source = R"({"type":"source")";
  EXPECT_EQ(without(source, R"({"type":"item")"), ExitStatus::Failed);
}

TEST_F(ExportTest, VerifyLooksAtCatalogueAndPage) {
  makeSources(3);
  options_.choices.catalogue = true;
  for (const char* const victim :
       {"catalogue.sqlite", "index.html", "index/about.js", "index/data-0001.js", "index/app.js"}) {
    for (const bool isGone : {false, true}) {
      ASSERT_EQ(exportTo("out"), ExitStatus::Done);
      EXPECT_EQ(Verify({options_.folder}), ExitStatus::Done);
      const fs::path path = directory_.path() / "out" / victim;
      fs::resize_file(path, 0);
      if (isGone) fs::remove(path);
      EXPECT_EQ(Verify({options_.folder}), ExitStatus::Failed) << victim;
      fs::remove_all(directory_.path() / "out");
    }
  }
}

TEST_F(ExportTest, SaysThatNoFolderIsTheOneAskedFor) {
  makeSources(2);
  options_.filter.folder = "Nonexistent";
  testing::internal::CaptureStderr();
  EXPECT_EQ(exportTo("out"), ExitStatus::Done);
  const std::string said = testing::internal::GetCapturedStderr();
  EXPECT_NE(said.find("no folder matches Nonexistent"), std::string::npos) << said;
  options_.filter.folder = "*";
  testing::internal::CaptureStderr();
  EXPECT_EQ(exportTo("all"), ExitStatus::Done);
  EXPECT_EQ(testing::internal::GetCapturedStderr().find("no folder matches"), std::string::npos);
  EXPECT_EQ(manifest("all").size(), 6u);
}

TEST_F(ExportTest, ShowsACopyByTheFilesOfTheFirstOne) {
  const std::string mail = MailWithFile("Same", "a.bin");
  options_.paths = {directory_.write("box", mail + mail).string()};
  options_.dedupe = true;
  options_.choices.catalogue = true;
  testing::internal::CaptureStderr();
  ASSERT_EQ(exportTo("out"), ExitStatus::Done);
  EXPECT_TRUE(
      testing::internal::GetCapturedStderr().ends_with("; 1 is a copy, and not written again\n"));
  const std::string piece = tree("out").at("index/data-0001.js");
  const std::string file = "2024-05-01 Same [0]/message.txt";
  const size_t first = piece.find(file);
  ASSERT_NE(first, std::string::npos) << piece;
  EXPECT_NE(piece.find(file, first + 1), std::string::npos) << piece;
  EXPECT_EQ(manifest("out")[1]["files"].size(), 0u);
  EXPECT_EQ(Verify({options_.folder}), ExitStatus::Done);
}

TEST_F(ExportTest, SaysThatNoWorkerCanBeStarted) {
  makeSources(1);
  options_.program = directory_.path() / "none";
  EXPECT_TRUE(failureOf("out").starts_with("no worker can be started")) << failureOf("out");
}

TEST_F(ExportTest, PutsALargeMailIntoAnMboxWholly) {
  std::string body;
  while (body.size() < 2'500'000) body += "A line of the text that is like every other one.\n";
  options_.paths = {directory_.write("box", Mail("Large", 1, body)).string()};
  options_.choices.forms = {ExportForm::Mbox};
  ASSERT_EQ(exportTo("out"), ExitStatus::Done);
  EXPECT_NE(tree("out").at("box/messages.mbox").find(body), std::string::npos);
  EXPECT_EQ(Verify({options_.folder}), ExitStatus::Done);
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

TEST_F(ExportTest, JoinsThePdfsOfAFolder) {
  makeSources(3);
  options_.choices.forms = {ExportForm::Pdf};
  options_.choices.onePdf = true;
  options_.choices.attachments = false;
  options_.choices.pages.helpers = HELPERS_PATH;
  options_.seconds = 600;
  options_.batchItems = 2;
  EXPECT_EQ(exportTo("whole"), ExitStatus::Done);
  const auto whole = tree("whole");
  std::vector<std::string> names;
  for (const auto& [name, bytes] : whole) names.push_back(name);
  EXPECT_EQ(names, (std::vector<std::string>{"box/messages.pdf", "manifest.jsonl",
                                             "other.eml/messages.pdf"}));
  const test::MailPdfFacts facts = test::ReadMailPdf(whole.at("box/messages.pdf"));
  ASSERT_EQ(facts.marks.size(), 4U);
  EXPECT_EQ(facts.marks[2].title, "2024-05-01 10:34 Subject 2");
  // The fourth has a file beside its mail.
  EXPECT_EQ(facts.files.size(), 5U);
  uint64_t page = 0;
  for (const json& row : manifest("whole")) {
    if (row["type"] != "item" || row["source"] == options_.paths[1]) continue;
    ASSERT_EQ(row["files"].size(), 1U);
    EXPECT_EQ(row["files"][0]["path"], "box/messages.pdf");
    EXPECT_EQ(row["files"][0]["page"], facts.marks[page].page + 1);
    ++page;
  }
  EXPECT_EQ(page, 4U);
  EXPECT_EQ(Verify({options_.folder}), ExitStatus::Done);

  options_.workers = 2;
  for (int change = 1; isKilledAt("out", change); ++change) {
    options_.resume = true;
    EXPECT_EQ(exportTo("out"), ExitStatus::Done) << change;
    EXPECT_EQ(tree("out"), whole) << change;
    fs::remove_all(directory_.path() / "out");
    options_.resume = false;
  }
  EXPECT_EQ(tree("out"), whole);
}

#endif

}  // namespace
}  // namespace tarn::archive
