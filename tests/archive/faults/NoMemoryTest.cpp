// Calls for memory that are refused, one at a time (FaultyMemory.cpp), in list, show and export.
#include <sstream>

#include "archive/faults/FaultFixture.h"

namespace tarn::archive {
namespace {

class NoMemory : public FaultyExport {
 protected:
  NoMemory() {
    write("in/mail.eml", MailWithParts(1));
    for (const char* const name : {"mailbox.pst", "msg/rtf.msg"}) {
      const std::filesystem::path from = std::filesystem::path(EXAMPLES_PATH) / name;
      std::filesystem::copy_file(from, path("in") / from.filename());
    }
  }

  // Call number `at` gets no memory, 0 refuses none.
  test::ProgramResult runRefusing(uint64_t at, const std::vector<std::string>& arguments) {
    write("counter", std::string(sizeof(uint64_t), '\0'));
    test::ProgramCall call;
    call.program = TARNMAIL_ARCHIVE_PATH;
    call.arguments = arguments;
    call.workingDirectory = directory_.path();
    call.environment = {{"LD_PRELOAD", FAULTY_MEMORY},
                        {"TARN_MEMORY_AT", std::to_string(at)},
                        {"TARN_MEMORY_COUNTER", path("counter")},
                        // As tarnmail starts it.
                        {"G_SLICE", "always-malloc"},
                        {"TMPDIR", path("tmp")},
                        {"LC_ALL", "C.UTF-8"}};
    test::ProgramResult result = test::RunProgram(call);
    const std::string bytes = test::ReadWholeFile(path("counter"));
    std::memcpy(&calls_, bytes.data(), sizeof calls_);
    return result;
  }

  // An end by an exit status, with lines of tarnmail alone.
  static void expectPlainEnd(const test::ProgramResult& result) {
    EXPECT_TRUE(result.exitStatus >= 0 && result.exitStatus <= 2) << result.exitStatus;
    EXPECT_EQ(result.err.find("internal error"), std::string::npos) << result.err;
    std::istringstream lines(result.err);
    for (std::string line; std::getline(lines, line);) {
      EXPECT_TRUE(line.starts_with("tarnmail: ")) << result.err;
    }
    EXPECT_TRUE(result.exitStatus == 0 || !result.err.empty());
  }

  // The same output, or a status and a line that tell of less; each `step`th call is refused.
  void expectAllOrWords(const std::vector<std::string>& arguments, uint64_t step) {
    const test::ProgramResult whole = runRefusing(0, arguments);
    ASSERT_EQ(whole.exitStatus, 0);
    const uint64_t calls = calls_;
    ASSERT_GT(calls, 1000u);
    uint64_t told = 0;
    for (uint64_t at = 1; at <= calls; at += step) {
      SCOPED_TRACE("call " + std::to_string(at) + " of " + std::to_string(calls));
      const test::ProgramResult result = runRefusing(at, arguments);
      expectPlainEnd(result);
      if (result.exitStatus == 0) {
        EXPECT_EQ(result.out, whole.out);
      }
      told += result.exitStatus == 0 ? 0 : 1;
      EXPECT_TRUE(std::filesystem::is_empty(path("tmp")));
      if (HasFailure()) return;
    }
    EXPECT_GT(told, 10u);
  }
};

TEST_F(NoMemory, EndsListsInWords) { expectAllOrWords({"list", "--json", "in"}, 97); }

TEST_F(NoMemory, EndsShownMailsInWords) { expectAllOrWords({"show", "in/mail.eml"}, 71); }

TEST_F(NoMemory, EndsShownStoresInWords) {
  expectAllOrWords({"show", "in/mailbox.pst", "200024"}, 71);
}

TEST_F(NoMemory, LeavesNoHalfExports) {
  const std::vector<std::string> exporting = {"export", "in", "-o", "out", "--to", "html,eml,mbox"};
  std::vector<std::string> resuming = exporting;
  resuming.push_back("--resume");
  ASSERT_EQ(runRefusing(0, exporting).exitStatus, 0);
  const Tree whole = tree("out");
  const uint64_t calls = calls_;
  for (uint64_t at = 1; at <= calls; at += 401) {
    SCOPED_TRACE("call " + std::to_string(at) + " of " + std::to_string(calls));
    std::filesystem::remove_all(path("out"));
    const test::ProgramResult result = runRefusing(at, exporting);
    expectPlainEnd(result);
    if (result.exitStatus == 0) {
      EXPECT_EQ(difference(tree("out"), whole), "");
    }
    if (!std::filesystem::exists(path("out/manifest.jsonl"))) {
      EXPECT_EQ(runRefusing(0, resuming).exitStatus, 0);
      EXPECT_EQ(difference(tree("out"), whole), "");
    }
    EXPECT_EQ(runRefusing(0, {"verify", "out"}).exitStatus, 0);
    if (HasFailure()) return;
  }
}

}  // namespace
}  // namespace tarn::archive
