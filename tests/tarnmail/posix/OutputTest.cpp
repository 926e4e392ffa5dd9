// Places that only POSIX has, and the system's own words there. Windows has no device that is
// always full: there a handle for reading alone takes its place. It has links, but Wine makes none:
// win32/SystemFilesTest.cpp has what can be told of the way from a link to its file.

#include "tarnmail/OutputFixture.h"

#include "tarnmail/ExampleDocuments.h"

namespace tarn::test {
namespace {

namespace fs = std::filesystem;

TEST_F(Output, ReportsAFullDevice) {
  for (const auto& arguments : allCommands()) {
    EXPECT_EQ(failure(1, arguments, StandardOutput::TakesNothing),
              "standard output: No space left on device");
  }
}

TEST_F(Output, ReplacesTheFileThatALinkNames) {
  fs::create_directory(directory_.path() / "sub");
  directory_.write("sub/out", "old");
  fs::create_symlink("sub/out", directory_.path() / "link");
  output({"extract", file_, "2", "-o", "link"});
  EXPECT_TRUE(fs::is_symlink(directory_.path() / "link"));
  EXPECT_EQ(ReadWholeFile(directory_.path() / "sub/out"), kRooms);
  EXPECT_EQ(directory_.listing(), "link sub sub/out");
}

TEST_F(Output, WritesToADevice) {
  output({"extract", file_, "2", "-o", "/dev/null"});
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
  EXPECT_EQ(extractTo(1, "/dev/full"), "/dev/full: No space left on device");
  EXPECT_EQ(output({"extract", file_, "2", "-o", "/dev/stdout"}), kRooms);
}

TEST_F(Output, SaysWhatTheSystemSaysOfAPlace) {
  fs::create_directory(directory_.path() / "folder");
  directory_.write("plain", "p");
  EXPECT_EQ(extractTo(2, "plain/out"), "plain/out: Not a directory");
  EXPECT_EQ(extractTo(2, std::string(300, 'n')), std::string(300, 'n') + ": File name too long");
  fs::permissions(directory_.path() / "folder", fs::perms::owner_read | fs::perms::owner_exec);
  EXPECT_EQ(extractTo(2, "folder/out"), "folder/out: Permission denied");
  EXPECT_EQ(directory_.listing(), "folder plain");
}

// Another file could take its place; but its owner has said that it is to stay.
TEST_F(Output, KeepsAFileThatIsForReadingAlone) {
  fs::permissions(directory_.write("out", "old"), fs::perms::owner_read);
  fs::create_symlink("out", directory_.path() / "link");
  EXPECT_EQ(extractTo(2, "out"), "out: Permission denied");
  EXPECT_EQ(extractTo(2, "link"), "link: Permission denied");
  EXPECT_EQ(ReadWholeFile(directory_.path() / "out"), "old");
  EXPECT_EQ(directory_.listing(), "link out");
}

TEST_F(Output, KeepsThePermissionsOfAFile) {
  using fs::perms;
  const fs::path place = directory_.write("out", "old");
  for (const perms wanted : {perms::owner_read | perms::owner_write,
                             perms::owner_all | perms::group_write | perms::others_read}) {
    fs::permissions(place, wanted);
    output({"extract", file_, "2", "-o", "out"});
    EXPECT_EQ(fs::status(place).permissions(), wanted);
  }
  EXPECT_EQ(ReadWholeFile(place), kRooms);
}

TEST_F(Output, MakesTheFileThatALinkNames) {
  fs::create_directory(directory_.path() / "sub");
  fs::create_symlink("sub/more", directory_.path() / "link");
  fs::create_symlink("out", directory_.path() / "sub/more");
  output({"extract", file_, "2", "-o", "link"});
  EXPECT_EQ(directory_.listing(), "link sub sub/more sub/out");
  EXPECT_TRUE(fs::is_symlink(directory_.path() / "sub/more"));
  EXPECT_EQ(ReadWholeFile(directory_.path() / "sub/out"), kRooms);
  fs::create_symlink("loop", directory_.path() / "loop");
  EXPECT_EQ(extractTo(2, "loop"), "loop: Too many levels of symbolic links");
  fs::create_symlink("none/out", directory_.path() / "lost");
  EXPECT_EQ(extractTo(2, "lost"), "lost: No such file or directory");
}

TEST_F(Output, TakesNamesOfAnyBytes) {
  output({"extract", file_, "2", "-o", "caf\xE9.csv"});
  EXPECT_EQ(ReadWholeFile(directory_.path() / "caf\xE9.csv"), kRooms);
}

}  // namespace
}  // namespace tarn::test
