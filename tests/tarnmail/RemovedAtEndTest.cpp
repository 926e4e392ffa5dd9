// What goes when the program is done with it. tests/tarnmail/posix/SignalsTest.cpp has the signals.

#include "console/RemovedAtEnd.h"

#include <gtest/gtest.h>

#include "support/TempDirectory.h"

namespace tarn::host {
namespace {

namespace fs = std::filesystem;

class RemovedAtEndTest : public ::testing::Test {
 protected:
  RemovedAtEnd::Maker writer(const std::string& name) const {
    return [this, name](std::error_code&) { return directory_.write(name, "bytes"); };
  }

  const test::TempDirectory directory_;
};

TEST_F(RemovedAtEndTest, GoesWithItsObject) {
  {
    RemovedAtEnd file;
    EXPECT_FALSE(file.make(writer("file")));
    EXPECT_EQ(file.path(), directory_.path() / "file");
    RemovedAtEnd folder;
    EXPECT_FALSE(folder.make([this](std::error_code& error) {
      fs::create_directories(directory_.path() / "folder" / "sub", error);
      directory_.write("folder/sub/a", "a");
      directory_.write("folder/b", "b");
      return directory_.path() / "folder";
    }));
    EXPECT_EQ(directory_.listing(), "file folder folder/b folder/sub folder/sub/a");
  }
  EXPECT_EQ(directory_.listing(), "");
}

TEST_F(RemovedAtEndTest, StaysWhenItIsKept) {
  {
    RemovedAtEnd file;
    EXPECT_FALSE(file.make(writer("file")));
    file.keep();
    EXPECT_TRUE(file.path().empty());
  }
  EXPECT_EQ(directory_.listing(), "file");
}

TEST_F(RemovedAtEndTest, IsNothingWhenItCannotBeMade) {
  directory_.write("old", "of somebody else");
  {
    RemovedAtEnd file;
    EXPECT_EQ(file.make([this](std::error_code& error) {
      error = std::make_error_code(std::errc::file_exists);
      return directory_.path() / "old";
    }),
              std::errc::file_exists);
    EXPECT_TRUE(file.path().empty());
  }
  EXPECT_EQ(directory_.listing(), "old");
}

}  // namespace
}  // namespace tarn::host
