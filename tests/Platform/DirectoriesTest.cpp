#include "Platform/Directories.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "support/TempDirectory.h"

namespace tarn::platform {
namespace {

namespace fs = std::filesystem;

class Directories : public testing::Test {
 protected:
  const test::TempDirectory directory_;
  const fs::path root_ = directory_.path();
};

TEST_F(Directories, MakesOne) {
  EXPECT_EQ(MakeDirectory((root_ / "new").u16string().c_str()), DirectoryStatus::Created);
  EXPECT_TRUE(fs::is_directory(root_ / "new"));
}

TEST_F(Directories, TellsOneThatExisted) {
  const std::u16string path = (root_ / "twice").u16string();
  EXPECT_EQ(MakeDirectory(path.c_str()), DirectoryStatus::Created);
  EXPECT_EQ(MakeDirectory(path.c_str()), DirectoryStatus::AlreadyExisted);
  EXPECT_TRUE(fs::is_directory(root_ / "twice"));
}

TEST_F(Directories, FailsWithoutAParent) {
  EXPECT_EQ(MakeDirectory((root_ / "missing/new").u16string().c_str()), DirectoryStatus::Failed);
  EXPECT_FALSE(fs::exists(root_ / "missing"));
}

TEST_F(Directories, FailsBelowAFile) {
  std::ofstream(root_ / "file") << "x";
  EXPECT_EQ(MakeDirectory((root_ / "file/new").u16string().c_str()), DirectoryStatus::Failed);
}

TEST_F(Directories, FailsForNoPath) {
  EXPECT_EQ(MakeDirectory(nullptr), DirectoryStatus::Failed);
  EXPECT_EQ(MakeDirectory(u""), DirectoryStatus::Failed);
  EXPECT_FALSE(RemoveEmptyDirectory(nullptr));
  EXPECT_FALSE(RemoveEmptyDirectory(u""));
}

TEST_F(Directories, FailsForPathsBeyondTheSystem) {
  const std::u16string root = root_.u16string() + u"/";
  EXPECT_EQ(MakeDirectory((root + std::u16string(5000, u'x')).c_str()), DirectoryStatus::Failed);
  EXPECT_FALSE(RemoveEmptyDirectory((root + std::u16string(100000, u'x')).c_str()));
  EXPECT_TRUE(fs::is_empty(root_));
}

TEST_F(Directories, SeparatesByBackslashesAndSlashes) {
  const std::u16string root = root_.u16string();
  EXPECT_EQ(MakeDirectory((root + u"\\outer").c_str()), DirectoryStatus::Created);
  EXPECT_EQ(MakeDirectory((root + u"\\outer/inner\\").c_str()), DirectoryStatus::Created);
  EXPECT_TRUE(fs::is_directory(root_ / "outer" / "inner"));
  EXPECT_TRUE(RemoveEmptyDirectory((root + u"\\outer\\inner").c_str()));
  EXPECT_FALSE(fs::exists(root_ / "outer" / "inner"));
}

TEST_F(Directories, KeepsNamesInUnicode) {
  EXPECT_EQ(MakeDirectory((root_.u16string() + u"/\u00E4\u3042\U0001F600").c_str()),
            DirectoryStatus::Created);
  EXPECT_TRUE(fs::is_directory(root_ / u8"\u00E4\u3042\U0001F600"));
}

TEST_F(Directories, RemovesOnlyEmptyOnes) {
  const std::u16string path = (root_ / "full").u16string();
  ASSERT_EQ(MakeDirectory(path.c_str()), DirectoryStatus::Created);
  std::ofstream(root_ / "full/file") << "x";
  EXPECT_FALSE(RemoveEmptyDirectory(path.c_str()));
  EXPECT_TRUE(fs::exists(root_ / "full/file"));
  fs::remove(root_ / "full/file");
  EXPECT_TRUE(RemoveEmptyDirectory(path.c_str()));
  EXPECT_FALSE(fs::exists(root_ / "full"));
  EXPECT_FALSE(RemoveEmptyDirectory(path.c_str()));
}

TEST_F(Directories, RemovesNoFile) {
  std::ofstream(root_ / "file") << "x";
  EXPECT_FALSE(RemoveEmptyDirectory((root_ / "file").u16string().c_str()));
  EXPECT_TRUE(fs::exists(root_ / "file"));
}

}  // namespace
}  // namespace tarn::platform
