// An export by tasks is that of one machine, file by file.

#include <csignal>
#include <fstream>

#include "ClusterFixture.h"
#include "ReadMailPdf.h"
#include "archive/UnreadableMails.h"
#include "archive/cluster/AttemptLog.h"
#include "archive/cluster/Calibration.h"
#include "console/Json.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using host::ExitStatus;

class MergeTest : public ClusterTest {
 protected:
  // Both ways, however many tasks there are and processes work at each.
  void expectSame(const std::vector<uint64_t>& counts) {
    const ExitStatus alone = exportAlone();
    const Tree expected = tree("single");
    size_t workers = 0;
    for (const uint64_t tasks : counts) {
      SCOPED_TRACE(std::to_string(tasks) + " tasks");
      fs::remove_all(at("out"));
      const PlanFile planned = plan(tasks);
      EXPECT_EQ(planned.tasks(), tasks);
      runAll(planned, ++workers);
      MergeOptions options = mergeOptions();
      options.workers = workers;
      EXPECT_EQ(Merge(options), alone);
      EXPECT_EQ(differences(tree("out"), expected), "");
    }
    EXPECT_EQ(Verify({text("out")}), ExitStatus::Done);
  }
};

TEST_F(MergeTest, GivesTheExportOfOneMachine) {
  addAll();
  exporting_.choices.forms = {ExportForm::Html, ExportForm::Text, ExportForm::Eml,
                              ExportForm::Json};
  expectSame({7, 2});
}

TEST_F(MergeTest, TellsOfMailFilesThatCannotBeRead) {
  addMails("mails", 3);
  (void)directory_.write("mails/lost.pst", "no store any more");
  (void)directory_.write("mails/secret", EncryptedStore());
  (void)directory_.write("mails/letter.doc", LetterOfOtherProgram());
  (void)directory_.write("mails/letter.msg", LetterOfOtherProgram());
  EXPECT_EQ(exportAlone("first"), ExitStatus::Failed);
  expectSame({2});
}

TEST_F(MergeTest, PutsMboxesTogether) {
  addAll();
  exporting_.choices.forms = {ExportForm::Mbox};
  exporting_.choices.attachments = false;
  expectSame({5, 1, 9});
}

TEST_F(MergeTest, LeavesCopiesOutWhereverTheyAre) {
  addAll();
  addMails("other", 6);
  exporting_.dedupe = true;
  exporting_.choices.forms = {ExportForm::Text, ExportForm::Mbox};
  expectSame({5, 2});
}

#ifdef HELPERS_PATH

TEST_F(MergeTest, GivesThePdfsOfOneMachine) {
  addMails("mails", 2);
  addStore("store.pst", 8);
  exporting_.choices.forms = {ExportForm::Pdf};
  exporting_.seconds = 600;
  expectSame({3, 1});
}

TEST_F(MergeTest, JoinsThePdfsOfFolders) {
  addMails("mails", 2);
  addMbox("box", 6);
  addStore("store.pst", 12);
  addMails("copies", 2);
  exporting_.choices.forms = {ExportForm::Html, ExportForm::Text, ExportForm::Eml,
                              ExportForm::Mbox, ExportForm::Json, ExportForm::Pdf};
  exporting_.choices.onePdf = true;
  exporting_.dedupe = true;
  exporting_.seconds = 600;
  expectSame({6, 3});
  // Those of the box were made by several tasks.
  const test::MailPdfFacts facts = test::ReadMailPdf(tree("out").at("box/messages.pdf"));
  EXPECT_EQ(facts.marks.size(), 6U);
}

// One folder has more pages than a file of them takes.
TEST_F(MergeTest, JoinsThePdfsOfALargeFolderIntoSeveral) {
  std::string pages = "Content-Type: text/html\n\n";
  for (int page = 0; page < 600; ++page) pages += "<div style='height:25cm'>.</div>\n";
  std::string box;
  for (int number = 0; number < 4; ++number) {
    box += "From ann@example.com Wed May  1 10:34:56 2024\n" + MailText(number, "");
    box.erase(box.size() - 2);
    box += pages + "\n";
  }
  (void)directory_.write("box", box);
  addPath("box");
  exporting_.choices.forms = {ExportForm::Pdf};
  exporting_.choices.onePdf = true;
  exporting_.choices.attachments = false;
  exporting_.seconds = 600;
  expectSame({3});
  const Tree merged = tree("out");
  for (const char* const name : {"box/messages.pdf", "box/messages 2.pdf"}) {
    ASSERT_TRUE(merged.contains(name));
    EXPECT_EQ(test::ReadMailPdf(merged.at(name)).marks.size(), 2U);
  }
}

#endif

TEST_F(MergeTest, TakesFiltersAndRecoveredItems) {
  addAll();
  exporting_.filter.subject = "Subject 3";
  exporting_.recover = true;
  exporting_.choices.catalogue = false;
  expectSame({4});
}

TEST_F(MergeTest, TellsThatNoFolderMatchesAsPlanAndExportDo) {
  addStore("store.pst", 4);
  addMails("mails", 1);
  const auto said = [](const std::function<void()>& command) {
    ::testing::internal::CaptureStderr();
    command();
    return ::testing::internal::GetCapturedStderr();
  };
  const auto expectSaid = [&](bool isSaid) {
    const std::string line = "no folder matches " + *exporting_.filter.folder + "; ";
    const auto expectIn = [&](const std::string& text) {
      EXPECT_EQ(text.find(line) != std::string::npos, isSaid) << text;
    };
    expectIn(
        said([&] { EXPECT_EQ(exportAlone("of " + *exporting_.filter.folder), ExitStatus::Done); }));
    expectIn(said([&] { runAll(plan(1)); }));
    expectIn(said([&] { EXPECT_EQ(merge(), ExitStatus::Done); }));
    fs::remove_all(at("out"));
  };
  exporting_.filter.folder = "Nowhere";
  expectSaid(true);
  exporting_.filter.folder = "Sent";
  expectSaid(false);
}

TEST_F(MergeTest, TellsInputsThatCannotBeReadAsAnExportDoes) {
  addMails("mails", 3);
  (void)directory_.write("broken.pst", "!BDN and no store");
  addPath("broken.pst");
  EXPECT_EQ(exportAlone(), ExitStatus::Usage);
  runAll(plan(2));
  EXPECT_EQ(merge(), ExitStatus::Failed);
  EXPECT_EQ(differences(tree("out"), tree("single")), "");
}

TEST_F(MergeTest, TakesInputsOfAnyName) {
  // Where parts are while tasks run, and bytes that are no text.
  addMbox("parts", 6);
  addMails("m\xFFils", 3);
  addMails("Parts", 2);
  expectSame({4});
}

TEST_F(MergeTest, TakesInputsWithoutItems) {
  test::StoreBuilder store(test::PstLayout::Unicode);
  store.write(at("store.pst"));
  addPath("store.pst");
  EXPECT_EQ(exportAlone(), ExitStatus::Done);
  EXPECT_EQ(plan(3).tasks(), 0u);
  EXPECT_EQ(missing(), "");
  EXPECT_EQ(merge(), ExitStatus::Done);
  EXPECT_EQ(differences(tree("out"), tree("single")), "");
}

TEST_F(MergeTest, ChangesNothingWhereTasksAreMissing) {
  addMails("mails", 9);
  EXPECT_EQ(plan(9).tasks(), 9u);
  EXPECT_EQ(missing(), "0-8\n");
  for (const uint64_t task : {0u, 1u, 2u, 4u, 5u, 6u}) EXPECT_EQ(run(task), ExitStatus::Done);
  const Tree before = tree("out");
  EXPECT_EQ(missing(), "3,7-8\n");
  EXPECT_EQ(failureOf([this] { (void)merge(); }), text("out") + ": these tasks are missing: 3,7-8");
  EXPECT_EQ(differences(tree("out"), before), "");
}

// It is not known to be missing, nor to be there.
TEST_F(MergeTest, DoesNotCountAPartThatCannotBeRead) {
  addMails("mails", 2);
  runAll(plan(2));
  // In place of its facts a link to itself, which no user can read.
  fs::remove(at("out/parts/1/part.json"));
  fs::create_symlink("part.json", at("out/parts/1/part.json"));
  MissingOptions options;
  options.plan = text("plan");
  options.folder = text("out");
  for (const std::function<void()>& command :
       {std::function<void()>([&] { (void)Missing(options); }),
        std::function<void()>([&] { (void)merge(); })}) {
    try {
      command();
      ADD_FAILURE() << "it was read";
    } catch (const host::Failure& failure) {
      EXPECT_EQ(failure.status(), ExitStatus::Temporary) << failure.what();
      EXPECT_NE(std::string(failure.what()).find("part.json"), std::string::npos);
    }
  }
  EXPECT_FALSE(fs::exists(at("out/manifest.jsonl")));
}

TEST_F(MergeTest, SetsDamagedPartsAside) {
  addMails("mails", 4);
  exporting_.choices.catalogue = false;
  (void)exportAlone();
  const PlanFile planned = plan(4);
  runAll(planned);
  fs::path victim;
  for (const auto& entry : fs::recursive_directory_iterator(at("out/parts/2"))) {
    if (entry.path().filename() == "message.txt") victim = entry.path();
  }
  std::ofstream(victim, std::ios::app) << "x";
  EXPECT_EQ(failureOf([this] { (void)merge(); }),
            text("out") + ": the parts of these tasks are damaged, and are to be made again: 2");
  EXPECT_EQ(missing(), "2\n");
  runAll(planned);
  EXPECT_EQ(merge(), ExitStatus::Done);
  EXPECT_EQ(differences(tree("out"), tree("single")), "");
}

TEST_F(MergeTest, SeesEveryKindOfDamage) {
  addMbox("box", 3);
  exporting_.choices.forms = {ExportForm::Text, ExportForm::Mbox};
  const PlanFile planned = plan(1);
  for (const char* const name :
       {"work/0/rows", "work/0/mails", "work/0/texts", "entries/0", "plans/0"}) {
    EXPECT_EQ(run(0), ExitStatus::Done);
    const fs::path victim = at("out/parts/0") / name;
    std::string bytes = test::ReadWholeFile(victim);
    bytes[bytes.size() / 2] = static_cast<char>(bytes[bytes.size() / 2] ^ 1);
    std::ofstream(victim, std::ios::binary) << bytes;
    EXPECT_NE(failureOf([this] { (void)merge(); }), "") << name;
    EXPECT_EQ(missing(), "0\n") << name;
  }
}

TEST_F(MergeTest, EndsTheSameAfterBeingKilledAnywhere) {
  addMbox("box", 70);
  addMails("mails", 5);
  exporting_.choices.forms = {ExportForm::Text, ExportForm::Mbox};
  (void)exportAlone();
  const Tree expected = tree("single");
  runAll(plan(3));
  fs::copy(at("out"), at("parts"), fs::copy_options::recursive);
  int killed = 0;
  for (int change = 1;; change += change < 8 ? 1 : 9) {
    fs::remove_all(at("out"));
    fs::copy(at("parts"), at("out"), fs::copy_options::recursive);
    const auto killedAt = [&](int number) {
      return WIFSIGNALED(inProcess([&] {
        int changes = 0;
        MergeOptions options = mergeOptions();
        options.step = [&] {
          if (++changes == number) std::raise(SIGKILL);
        };
        return static_cast<int>(Merge(options));
      }));
    };
    if (!killedAt(change)) break;
    ++killed;
    // Once more on the way.
    (void)killedAt(change / 2 + 1);
    EXPECT_EQ(merge(), ExitStatus::Done);
    EXPECT_EQ(differences(tree("out"), expected), "") << "killed at change " << change;
  }
  EXPECT_GT(killed, 10);
}

TEST_F(MergeTest, WaitsForAnotherMerge) {
  addMails("mails", 2);
  runAll(plan(2));
  MergeOptions options = mergeOptions();
  std::string refusal;
  ExitStatus refused = ExitStatus::Done;
  options.step = [&] {
    if (!refusal.empty()) return;
    try {
      (void)merge();
    } catch (const host::Failure& failure) {
      refusal = failure.what();
      refused = failure.status();
    }
  };
  EXPECT_EQ(Merge(options), ExitStatus::Done);
  EXPECT_EQ(refusal, text("out") + ": another program exports into it at this moment");
  EXPECT_EQ(refused, ExitStatus::Temporary);
  (void)exportAlone();
  EXPECT_EQ(differences(tree("out"), tree("single")), "");
}

TEST_F(MergeTest, TakesNoExportForItsOwn) {
  addMails("mails", 2);
  const PlanFile planned = plan(2);
  EXPECT_EQ(exportAlone("out"), ExitStatus::Done);
  const std::string refusal = text("out") + ": holds a finished export, and no " + text("out") +
                              ".attempts.jsonl tells that it is of this plan";
  EXPECT_EQ(failureOf([this] { (void)merge(); }), refusal);
  EXPECT_EQ(failureOf([this] { (void)Missing({text("plan"), text("out")}); }), refusal);
  EXPECT_EQ(run(0), ExitStatus::Usage);
  std::ofstream(at("out.attempts.jsonl")) << "{\"type\":\"plan\",\"plan\":7}\n";
  EXPECT_EQ(failureOf([this] { (void)merge(); }), refusal);
  fs::remove_all(at("out"));
  runAll(planned);
  EXPECT_EQ(merge(), ExitStatus::Done);
  // Whatever the names of the folder are.
  EXPECT_EQ(LogOfExport(at("out") / ""), at("out.attempts.jsonl"));
  EXPECT_EQ(LogOfExport(at("out") / "." / "x" / ".."), at("out.attempts.jsonl"));
  EXPECT_EQ(LogOfExport("."), fs::current_path().string() + ".attempts.jsonl");
}

TEST_F(MergeTest, IsDoneOnce) {
  addMails("mails", 2);
  const PlanFile planned = plan(2);
  runAll(planned);
  EXPECT_EQ(merge(), ExitStatus::Done);
  const Tree before = tree("out");
  EXPECT_EQ(merge(), ExitStatus::Done);
  EXPECT_EQ(run(0), ExitStatus::Done);
  EXPECT_EQ(missing(), "");
  EXPECT_EQ(differences(tree("out"), before), "");
}

TEST_F(MergeTest, KeepsALogOfAttemptsBeside) {
  addMails("mails", 2);
  const PlanFile planned = plan(2);
  runAll(planned);
  EXPECT_EQ(merge(), ExitStatus::Done);
  std::ifstream log(text("out") + ".attempts.jsonl");
  std::string line;
  ASSERT_TRUE(std::getline(log, line));
  EXPECT_EQ(host::ParsedJson<nlohmann::json>(line)["plan"], planned.id());
  for (int task = 0; task < 2; ++task) {
    ASSERT_TRUE(std::getline(log, line));
    const auto row = host::ParsedJson<nlohmann::json>(line);
    EXPECT_EQ(row["task"], task);
    EXPECT_EQ(row["exported"], 1);
    EXPECT_TRUE(row.contains("seconds") && row.contains("host"));
  }
}

TEST_F(MergeTest, TellsInTheLogWhatHasFailedBefore) {
  addMails("mails", 2);
  const PlanFile planned = plan(2);
  const std::string right = test::ReadWholeFile(at("mails/101.eml"));
  std::ofstream(at("mails/101.eml")) << "another";
  EXPECT_EQ(run(0), ExitStatus::Done);
  EXPECT_EQ(run(1), ExitStatus::Usage);
  fs::remove(at("mails/101.eml"));
  EXPECT_EQ(run(1), ExitStatus::Temporary);
  // What its machine could not write to the end, one of another plan, and what is no such line.
  std::ofstream(at("out.attempts/half.jsonl")) << "{\"type\":\"fail";
  std::ofstream(at("out.attempts/other.jsonl")) << "{\"type\":\"failure\",\"plan\":\"f\"}\n";
  std::ofstream(at("out.attempts/odd.jsonl"))
      << "{\"type\":\"failure\",\"plan\":1}\n{\"type\":\"failure\",\"plan\":\"" << planned.id()
      << "\",\"begun\":7,\"task\":\"x\"}\n";
  std::ofstream(at("mails/101.eml"), std::ios::binary) << right;
  EXPECT_EQ(run(1), ExitStatus::Done);
  // A merge that is killed before the end, after any of its steps, loses nothing of it.
  for (int last = 1; last <= 3; ++last) {
    EXPECT_NE(inProcess([this, last] {
                MergeOptions options = mergeOptions();
                int step = 0;
                options.step = [&] {
                  if (++step == last) raise(SIGKILL);
                };
                return static_cast<int>(Merge(options));
              }),
              0);
  }
  EXPECT_EQ(merge(), ExitStatus::Done);
  EXPECT_FALSE(fs::exists(at("out.attempts")));
  std::ifstream log(text("out") + ".attempts.jsonl");
  std::vector<nlohmann::json> rows;
  for (std::string line; std::getline(log, line);) {
    rows.push_back(host::ParsedJson<nlohmann::json>(line));
  }
  ASSERT_EQ(rows.size(), 5u);
  // Both may have begun in the same second.
  if (rows[2]["status"] != 2) std::swap(rows[2], rows[3]);
  EXPECT_EQ(rows[2]["type"], "failure");
  EXPECT_EQ(rows[2]["task"], 1);
  EXPECT_EQ(rows[2]["status"], 2);
  EXPECT_EQ(rows[2]["reason"], text("mails/101.eml") + ": has changed since it was planned");
  EXPECT_TRUE(rows[2].contains("seconds") && rows[2].contains("host") && rows[2].contains("begun"));
  EXPECT_EQ(rows[3]["status"], 75);
  EXPECT_EQ(rows[4]["type"], "attempt");
  // No time of such an attempt says what a message costs.
  EXPECT_NE(failureOf([this] { (void)CalibratedCost(text("out") + ".attempts.jsonl"); }), "");
}

}  // namespace
}  // namespace tarn::archive
