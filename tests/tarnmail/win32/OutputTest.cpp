// Places that only Windows has, and the system's own words there.

#include "tarnmail/OutputFixture.h"

#include "tarnmail/ExampleDocuments.h"
#include "tarnmail/win32/LockedFile.h"

namespace tarn::test {
namespace {

namespace fs = std::filesystem;

// As a device that is full does: every write fails.
TEST_F(Output, ReportsAHandleForReadingAlone) {
  for (const auto& arguments : allCommands()) {
    EXPECT_EQ(failure(1, arguments, StandardOutput::TakesNothing),
              "standard output: Permission denied");
  }
}

TEST_F(Output, WritesToADevice) {
  for (const char* device : {"NUL", "nul", "\\\\.\\NUL"}) {
    output({"extract", file_, "2", "-o", device});
    EXPECT_EQ(directory_.listing(), "");
  }
}

TEST_F(Output, SaysWhatTheSystemSaysOfAPlace) {
  directory_.write("plain", "p");
  EXPECT_EQ(extractTo(2, "plain/out"), "plain/out: No such file or directory");
  EXPECT_EQ(extractTo(2, "none\\out"), "none\\out: No such file or directory");
  EXPECT_EQ(extractTo(2, "what?"), "what?: not a valid file name");
  EXPECT_EQ(directory_.listing(), "plain");
}

// As everywhere on Windows, what is for reading alone is not replaced.
TEST_F(Output, KeepsAFileThatIsForReadingAlone) {
  const fs::path place = directory_.write("out", "old");
  fs::permissions(place, fs::perms::owner_read);
  EXPECT_EQ(extractTo(2, "out"), "out: Permission denied");
  fs::permissions(place, fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(ReadWholeFile(place), "old");
  EXPECT_EQ(directory_.listing(), "out");
}

TEST_F(Output, KeepsAFileThatIsOpenInAnotherProgram) {
  const fs::path place = directory_.write("out", "old");
  {
    const LockedFile lock(place);
    const std::string line = extractTo(2, "out");
    EXPECT_TRUE(line == "out: in use by another program" || line == "out: Permission denied")
        << line;
  }
  EXPECT_EQ(ReadWholeFile(place), "old");
  EXPECT_EQ(directory_.listing(), "out");
}

}  // namespace
}  // namespace tarn::test
