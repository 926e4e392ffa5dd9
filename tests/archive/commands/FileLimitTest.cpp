// Where files may not grow beyond a limit, as jobs of a cluster have one.

#include "ArchiveFixture.h"

namespace tarn::archive {
namespace {

class FileLimit : public ArchiveCommand {
 protected:
  // A block is of 512 or of 1024 bytes, as the shell counts.
  test::ProgramResult runWithLimit(int blocks, const std::vector<std::string>& arguments) {
    test::ProgramCall call = callOf(arguments);
    call.program = "/bin/sh";
    // Of what tests reach no file is written, which has more bytes than the limit too.
    call.environment.emplace_back("LLVM_PROFILE_FILE", "/dev/null");
    const std::string line = "ulimit -f " + std::to_string(blocks) + " && exec \"$0\" \"$@\"";
    call.arguments.insert(call.arguments.begin(), {"-c", line, TARNMAIL_PATH});
    test::ProgramResult result = test::RunProgram(call);
    EXPECT_EQ(temporary_.listing(), "");
    return result;
  }
};

// The messages are small enough, and the catalogue is not.
TEST_F(FileLimit, IsToldByAnExport) {
  example("mailbox.pst");
  const test::ProgramResult result = runWithLimit(20, {"export", "mailbox.pst", "-o", "out"});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_NE(result.err.find("catalogue.sqlite.new cannot be written"), std::string::npos)
      << result.err;
  EXPECT_FALSE(std::filesystem::exists(directory_.path() / "out/manifest.jsonl"));
}

TEST_F(FileLimit, IsToldByADocument) {
  example("html-inline-image.eml");
  const test::ProgramResult result =
      runWithLimit(1, {"document", "html-inline-image.eml", "-o", "out.html"});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.err, "tarnmail: out.html: File too large\n");
  EXPECT_EQ(directory_.listing(), "html-inline-image.eml");
}

}  // namespace
}  // namespace tarn::archive
