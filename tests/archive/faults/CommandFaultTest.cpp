// Commands beside export: no room on the disk, folders that may not be changed, and nobody who
// reads.
#include "archive/faults/FaultFixture.h"

namespace tarn::archive {
namespace {

using test::StandardOutput;

class CommandFault : public FaultyExport {
 protected:
  CommandFault() { write("mail.eml", MailWithParts(1)); }

  // An export that is searched and verified.
  void makeExport() {
    write("in/mail.eml", MailWithParts(1));
    ASSERT_EQ(exportInto("done", {"--to", "text"}).exitStatus, 0);
  }

  test::ProgramResult runTo(StandardOutput output, const std::vector<std::string>& arguments) {
    test::ProgramCall call;
    call.program = programOf(arguments);
    call.arguments = arguments;
    call.workingDirectory = directory_.path();
    call.environment = {{"TMPDIR", path("tmp")}, {"LC_ALL", "C.UTF-8"}};
    call.standardOutput = output;
    return test::RunProgram(call);
  }

  void makeReadOnly(const std::string& name) {
    std::filesystem::create_directory(path(name));
    std::filesystem::permissions(path(name), std::filesystem::perms::owner_write,
                                 std::filesystem::perm_options::remove);
  }

  std::vector<std::vector<std::string>> writers() const {
    return {{"list", "mail.eml"},
            {"list", "--json", "mail.eml"},
            {"list", "--folders", "mail.eml"},
            {"show", "mail.eml"},
            {"show", "mail.eml", "--headers"},
            {"show", "mail.eml", "--attachment", "1"},
            {"show", "mail.eml", "--all-attachments", "saved"},
            {"search", "done", "notes"},
            {"search", "done", "notes", "--json"},
            {"search", "--help"}};
  }
};

TEST_F(CommandFault, TellsThatStandardOutputIsFull) {
  makeExport();
  for (const std::vector<std::string>& arguments : writers()) {
    SCOPED_TRACE(::testing::PrintToString(arguments));
    const test::ProgramResult result = runTo(StandardOutput::TakesNothing, arguments);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.err, "tarnmail: standard output: No space left on device\n");
  }
}

TEST_F(CommandFault, TellsThatStandardOutputIsClosed) {
  makeExport();
  for (const std::vector<std::string>& arguments : writers()) {
    SCOPED_TRACE(::testing::PrintToString(arguments));
    const test::ProgramResult result = runTo(StandardOutput::Closed, arguments);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.err, "tarnmail: standard output: Bad file descriptor\n");
  }
}

TEST_F(CommandFault, EndsInSilenceWhereNobodyReads) {
  makeExport();
  for (const std::vector<std::string>& arguments : writers()) {
    SCOPED_TRACE(::testing::PrintToString(arguments));
    const test::ProgramResult result = runTo(StandardOutput::BrokenPipe, arguments);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.err, "");
  }
}

TEST_F(CommandFault, SavesAllAttachmentsWhetherTheirNamesAreReadOrNot) {
  const std::vector<std::string> saving = {"show", "mail.eml", "--all-attachments"};
  const auto into = [&](const std::string& folder, StandardOutput output) {
    std::vector<std::string> arguments = saving;
    arguments.push_back(folder);
    return runTo(output, arguments).exitStatus;
  };
  EXPECT_EQ(into("whole", StandardOutput::Captured), 0);
  const Tree whole = tree("whole");
  EXPECT_GT(whole.size(), 1u);
  EXPECT_EQ(into("unread", StandardOutput::BrokenPipe), 0);
  EXPECT_EQ(difference(tree("unread"), whole), "");
  EXPECT_EQ(into("full", StandardOutput::TakesNothing), 1);
  EXPECT_EQ(difference(tree("full"), whole), "");
  EXPECT_EQ(into("closed", StandardOutput::Closed), 1);
  EXPECT_EQ(difference(tree("closed"), whole), "");
}

// At each change: what is saved is whole, and a line tells why there is no more.
TEST_F(CommandFault, SavesNoHalfAttachmentsOnFullDisks) {
  const std::vector<std::string> saving = {"show", path("mail.eml"), "--all-attachments",
                                           path("out")};
  ASSERT_EQ(run(saving).exitStatus, 0);
  const Tree whole = tree("out");
  const uint64_t changes = calls_;
  ASSERT_GE(changes, 3u);
  for (const char* const kind : {"full", "once"}) {
    for (uint64_t at = 1; at <= changes; ++at) {
      SCOPED_TRACE(std::string(kind) + " at change " + std::to_string(at));
      std::filesystem::remove_all(path("out"));
      const test::ProgramResult result = run(saving, {kind, at});
      if (std::filesystem::exists(path("out"))) {
        for (const auto& [name, bytes] : tree("out")) {
          const auto other = whole.find(name);
          EXPECT_TRUE(other != whole.end() && other->second == bytes) << name;
        }
        if (result.exitStatus == 0) {
          EXPECT_EQ(difference(tree("out"), whole), "");
        }
      }
      if (result.exitStatus != 0) expectClearLine(result);
    }
  }
}

TEST_F(CommandFault, TellsWhyAFolderTakesNothing) {
  makeReadOnly("closed");
  const std::string denied = ": Permission denied\n";
  const std::string nothing = ": nothing can be written there: Permission denied\n";
  const struct {
    std::vector<std::string> arguments;
    int exitStatus;
    std::string err;
  } cases[] = {
      {{"show", "mail.eml", "--all-attachments", "closed"}, 1, "closed" + denied},
      {{"show", "mail.eml", "--all-attachments", "closed/new"}, 2, "closed/new" + denied},
      {{"show", "mail.eml", "--attachment", "1", "-o", "closed/new"}, 2, "closed/new" + denied},
      {{"show", "mail.eml", "--headers", "-o", "closed/new"}, 2, "closed/new" + denied},
      {{"export", "mail.eml", "-o", "closed"}, 2, "closed" + nothing},
      {{"export", "mail.eml", "-o", "closed/new"}, 2, "closed/new" + nothing},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(::testing::PrintToString(one.arguments));
    const test::ProgramResult result = run(one.arguments);
    EXPECT_EQ(result.exitStatus, one.exitStatus);
    EXPECT_EQ(result.err, "tarnmail: " + one.err);
    EXPECT_EQ(result.out, "");
    EXPECT_TRUE(std::filesystem::is_empty(path("closed")));
  }
}

// Searching and verifying change nothing, and need nothing that may be changed.
TEST_F(CommandFault, ReadsExportsThatMayNotBeChanged) {
  makeExport();
  const Tree before = tree("done");
  for (const auto& entry : std::filesystem::recursive_directory_iterator(path("done"))) {
    if (!entry.is_directory()) continue;
    std::filesystem::permissions(entry, std::filesystem::perms::owner_write,
                                 std::filesystem::perm_options::remove);
  }
  std::filesystem::permissions(path("done"), std::filesystem::perms::owner_write,
                               std::filesystem::perm_options::remove);
  EXPECT_EQ(run({"verify", "done"}).exitStatus, 0);
  const test::ProgramResult found = run({"search", "done", "notes"});
  EXPECT_EQ(found.exitStatus, 0);
  EXPECT_NE(found.out, "");
  EXPECT_EQ(difference(tree("done"), before), "");
}

class ClusterFault : public CommandFault {
 protected:
  ClusterFault() {
    makeSources(6);
    (void)exportInto("whole", {"--to", "text,mbox"});
    whole_ = tree("whole");
    EXPECT_EQ(run({"plan", path("in"), "-o", path("plan"), "--to", "text,mbox"}).exitStatus, 0);
  }

  test::ProgramResult task(const Fault& fault = {}) {
    return run({"run-task", path("plan"), "-o", path("out"), "--task", "0"}, fault);
  }

  test::ProgramResult merge(const Fault& fault = {}) {
    return run({"merge", path("plan"), path("out")}, fault);
  }

  // To be tried again, with words about the disk; or done, where all that is left is to tidy up.
  static void expectTemporary(const test::ProgramResult& result) {
    if (result.exitStatus == 0) return;
    EXPECT_EQ(result.exitStatus, 75);
    expectFullDisk(result.err);
  }

  Tree whole_;
};

// At every ninth change.
TEST_F(ClusterFault, DoesATaskAgainOnceThereIsRoom) {
  ASSERT_EQ(task({"count", 0}).exitStatus, 0);
  const uint64_t changes = calls_;
  ASSERT_GT(changes, 20u);
  for (uint64_t at = 1; at <= changes; at += 9) {
    SCOPED_TRACE("change " + std::to_string(at) + " of " + std::to_string(changes));
    std::filesystem::remove_all(path("out"));
    expectTemporary(task({"full", at}));
    EXPECT_EQ(task().exitStatus, 0);
    EXPECT_EQ(merge().exitStatus, 0);
    EXPECT_EQ(difference(tree("out"), whole_), "");
    if (HasFailure()) return;
  }
}

TEST_F(ClusterFault, MergesOnceThereIsRoom) {
  ASSERT_EQ(task().exitStatus, 0);
  std::filesystem::copy(path("out"), path("parts"), std::filesystem::copy_options::recursive);
  ASSERT_EQ(merge({"count", 0}).exitStatus, 0);
  EXPECT_EQ(difference(tree("out"), whole_), "");
  const uint64_t changes = calls_;
  ASSERT_GT(changes, 20u);
  for (uint64_t at = 1; at <= changes; at += 9) {
    SCOPED_TRACE("change " + std::to_string(at) + " of " + std::to_string(changes));
    std::filesystem::remove_all(path("out"));
    std::filesystem::copy(path("parts"), path("out"), std::filesystem::copy_options::recursive);
    expectTemporary(merge({"full", at}));
    EXPECT_EQ(merge().exitStatus, 0);
    EXPECT_EQ(difference(tree("out"), whole_), "");
    if (HasFailure()) return;
  }
}

}  // namespace
}  // namespace tarn::archive
