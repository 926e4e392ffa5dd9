// Pages where nobody takes them: a disk that is full at any change, a folder that is to be read
// alone, a pipe that nobody reads.

#include <cstring>
#include <filesystem>

#include "PagesFixture.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kNoRoom = "No space left on device";

class PagesWithoutRoom : public PagesFixture {
 protected:
  // The run whose change of that number below the folder fails, as all after it; 0: none does.
  ProgramResult runUntil(uint64_t change, const std::vector<std::string>& words) {
    const fs::path counter = temporary_.write("counter", std::string(sizeof(uint64_t), '\0'));
    ProgramCall call = pagesCall(words);
    call.environment.emplace_back("LD_PRELOAD", FAULTY_CALLS);
    call.environment.emplace_back("TARN_FAULT_KIND", change == 0 ? "count" : "full");
    call.environment.emplace_back("TARN_FAULT_AT", std::to_string(change));
    call.environment.emplace_back("TARN_FAULT_FOLDER", directory_.path());
    call.environment.emplace_back("TARN_FAULT_COUNTER", counter);
    ProgramResult result = RunProgram(call);
    const std::string bytes = ReadWholeFile(counter);
    std::memcpy(&changes_, bytes.data(), sizeof changes_);
    fs::remove(counter);
    return result;
  }

  // Wherever the disk is full, it is said, and nothing is left.
  void expectNothingLeft(const std::vector<std::string>& words, uint64_t least) {
    ASSERT_EQ(runUntil(0, words).exitStatus, 0);
    const uint64_t changes = changes_;
    ASSERT_GE(changes, least);
    fs::remove_all(directory_.path() / "out");
    for (uint64_t change = 1; change <= changes; ++change) {
      SCOPED_TRACE("change " + std::to_string(change) + " of " + std::to_string(changes));
      const ProgramResult result = runUntil(change, words);
      // A name that cannot be made, or be given, is a wrong one.
      EXPECT_EQ(result.exitStatus, change == 1 || change == changes ? 2 : 1);
      EXPECT_NE(result.err.find(kNoRoom), std::string::npos) << result.err;
      EXPECT_EQ(directory_.listing(), "mail.eml");
      EXPECT_EQ(temporary_.listing(), "");
      if (HasFailure()) return;
    }
  }

  uint64_t changes_ = 0;  // that the last run made
};

TEST_F(PagesWithoutRoom, LeaveNoPictures) {
  const std::string file = mail(kSampleFields + "\r\nText\r\n");
  expectNothingLeft({file, "-o", directory_.path() / "out"}, 3);
}

TEST_F(PagesWithoutRoom, LeaveNoPdf) {
  const std::string file = mail(kSampleFields + "\r\nText\r\n");
  expectNothingLeft({file, "--pdf", "-o", directory_.path() / "out"}, 2);
}

TEST_F(PagesWithoutRoom, AreToldOfByAStreamToo) {
  ProgramCall call = pagesCall({mail(kSampleFields + "\r\nText\r\n"), "--pdf", "-o", "-"});
  call.standardOutput = StandardOutput::TakesNothing;
  const ProgramResult full = RunProgram(call);
  EXPECT_EQ(full.exitStatus, 1);
  EXPECT_NE(full.err.find(kNoRoom), std::string::npos) << full.err;
  call.standardOutput = StandardOutput::Closed;
  const ProgramResult closed = RunProgram(call);
  EXPECT_EQ(closed.exitStatus, 1);
  EXPECT_NE(closed.err, "");
}

TEST_F(PagesWithoutRoom, NeedAFolderThatMayBeWritten) {
  const std::string file = mail(kSampleFields + "\r\nText\r\n");
  fs::create_directory(directory_.path() / "shut");
  fs::permissions(directory_.path() / "shut", fs::perms::owner_read | fs::perms::owner_exec);
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{file, "-o", "shut/out"}, {file, "--pdf", "-o", "shut/out.pdf"}}) {
    const ProgramResult result = RunProgram(pagesCall(words));
    EXPECT_EQ(result.exitStatus, 2) << result.err;
    EXPECT_NE(result.err.find("Permission denied"), std::string::npos) << result.err;
  }
  EXPECT_TRUE(fs::is_empty(directory_.path() / "shut"));
}

}  // namespace
}  // namespace tarn::test
