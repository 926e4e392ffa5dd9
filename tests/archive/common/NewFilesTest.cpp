#include "archive/common/NewFiles.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "console/Failure.h"
#include "support/TempDirectory.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;

class NewFilesIn : public ::testing::Test {
 protected:
  static std::string addTo(NewFiles& files, const std::string& name, const std::string& bytes) {
    return files.add(name, [&](const NewFiles::Write& write) {
      write(bytes);
      return true;
    });
  }

  test::TempDirectory directory_;
  const fs::path folder_ = directory_.path() / "saved";
};

TEST_F(NewFilesIn, MakesTheFolderAndTheFiles) {
  NewFiles files((folder_ / "deep").string());
  EXPECT_EQ(addTo(files, "a.txt", "one"), "a.txt");
  EXPECT_EQ(addTo(files, "A.TXT", "two"), "A (2).TXT");
  EXPECT_EQ(test::ReadWholeFile(folder_ / "deep/a.txt"), "one");
  EXPECT_EQ(test::ReadWholeFile(folder_ / "deep/A (2).TXT"), "two");
  EXPECT_EQ(directory_.listing(), "saved saved/deep saved/deep/A (2).TXT saved/deep/a.txt");
}

TEST_F(NewFilesIn, ReplacesNothing) {
  directory_.write("a.txt", "old");
  fs::create_symlink("nowhere", directory_.path() / "link");
  NewFiles files(directory_.path().string());
  EXPECT_EQ(addTo(files, "a.txt", "new"), "a (2).txt");
  EXPECT_EQ(addTo(files, "link", "new"), "link (2)");
  EXPECT_EQ(test::ReadWholeFile(directory_.path() / "a.txt"), "old");
  EXPECT_EQ(directory_.listing(), "a (2).txt a.txt link link (2)");
}

// Somebody else is quicker.
TEST_F(NewFilesIn, ReplacesNothingThatHasJustCome) {
  NewFiles files(directory_.path().string());
  const std::string name = files.add("a.txt", [&](const NewFiles::Write& write) {
    directory_.write("a.txt", "theirs");
    write("ours");
    return true;
  });
  EXPECT_EQ(name, "a (2).txt");
  EXPECT_EQ(test::ReadWholeFile(directory_.path() / "a.txt"), "theirs");
  EXPECT_EQ(test::ReadWholeFile(directory_.path() / "a (2).txt"), "ours");
}

TEST_F(NewFilesIn, LeavesNothingOfAFileThatDoesNotBecomeWhole) {
  NewFiles files(directory_.path().string());
  const auto broken = [](const NewFiles::Write& write) {
    write("half");
    return false;
  };
  EXPECT_EQ(files.add("a.txt", broken), "");
  const auto thrown = [](const NewFiles::Write& write) -> bool {
    write("half");
    throw std::runtime_error("no more");
  };
  EXPECT_THROW(files.add("a.txt", thrown), std::runtime_error);
  EXPECT_EQ(directory_.listing(), "");
}

TEST_F(NewFilesIn, StaysInItsFolderWhateverBecomesOfThePath) {
  fs::create_directory(folder_);
  NewFiles files(folder_.string());
  fs::rename(folder_, directory_.path() / "moved");
  fs::create_directory(directory_.path() / "other");
  fs::create_directory_symlink("other", folder_);
  EXPECT_EQ(addTo(files, "a.txt", "one"), "a.txt");
  EXPECT_EQ(test::ReadWholeFile(directory_.path() / "moved/a.txt"), "one");
  EXPECT_TRUE(fs::is_empty(directory_.path() / "other"));
}

TEST_F(NewFilesIn, NeedsAFolder) {
  const auto statusOf = [](const std::string& folder) {
    try {
      const NewFiles files(folder);
    } catch (const host::Failure& failure) {
      return failure.status();
    }
    return host::ExitStatus::Done;
  };
  EXPECT_EQ(statusOf(""), host::ExitStatus::Usage);
  EXPECT_EQ(statusOf(directory_.write("file", "x").string()), host::ExitStatus::Usage);
  EXPECT_EQ(statusOf((directory_.path() / "file/below").string()), host::ExitStatus::Usage);
}

}  // namespace
}  // namespace tarn::archive
