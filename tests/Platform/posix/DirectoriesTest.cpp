// What directories are only where permissions are bits and names are bytes.
#include "Platform/Directories.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "support/TempDirectory.h"

namespace tarn::platform {
namespace {

mode_t PermissionsOf(const std::filesystem::path& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : mode_t{0};
}

TEST(DirectoriesOfPosix, AreTheUsersAlone) {
  const test::TempDirectory root;
  const mode_t former = umask(0);
  EXPECT_EQ(MakeDirectory((root.path() / "new").u16string().c_str()), DirectoryStatus::Created);
  umask(former);
  EXPECT_EQ(PermissionsOf(root.path() / "new"), mode_t{0700});
}

// All spellings of one path that make a system follow a link where its name is last.
const char* const kEnds[] = {"", "/", "\\", "//", "/.", "/./", "\\.\\"};

DirectoryStatus Make(const std::filesystem::path& path, const std::string& end = "") {
  return MakeDirectory(std::filesystem::path(path.string() + end).u16string().c_str());
}

TEST(DirectoriesOfPosix, ThatExistServeWhenTheyAreTheUsersAlone) {
  const test::TempDirectory root;
  const std::filesystem::path own = root.path() / "own";
  std::filesystem::create_directory(own);
  for (const mode_t mode : {0700u, 0755u, 0711u, 0500u, 01755u, 02750u}) {
    ASSERT_EQ(chmod(own.c_str(), mode), 0);
    for (const char* const end : kEnds) {
      EXPECT_EQ(Make(own, end), DirectoryStatus::AlreadyExisted) << std::oct << mode << end;
    }
  }
}

TEST(DirectoriesOfPosix, ThatOthersMayWriteToDoNotServe) {
  const test::TempDirectory root;
  const std::filesystem::path shared = root.path() / "shared";
  std::filesystem::create_directory(shared);
  for (const mode_t mode : {0770u, 0720u, 0702u, 0777u, 01777u, 02775u}) {
    ASSERT_EQ(chmod(shared.c_str(), mode), 0);
    EXPECT_EQ(Make(shared), DirectoryStatus::Failed) << std::oct << mode;
  }
  EXPECT_TRUE(std::filesystem::is_directory(shared));
}

// A directory of somebody else's: the superuser makes one, for anybody else the system has one.
TEST(DirectoriesOfPosix, OfSomebodyElseDoNotServe) {
  const test::TempDirectory root;
  std::filesystem::path foreign = "/usr";
  if (geteuid() == 0) {
    foreign = root.path() / "foreign";
    std::filesystem::create_directory(foreign);
    ASSERT_EQ(chmod(foreign.c_str(), 0700), 0);
    EXPECT_EQ(Make(foreign), DirectoryStatus::AlreadyExisted);
    ASSERT_EQ(chown(foreign.c_str(), 1, 1), 0);
  }
  EXPECT_EQ(Make(foreign), DirectoryStatus::Failed);
  EXPECT_TRUE(std::filesystem::is_directory(foreign));
}

TEST(DirectoriesOfPosix, ThatAreLinksDoNotServe) {
  const test::TempDirectory root;
  const std::filesystem::path own = root.path() / "own";
  ASSERT_EQ(Make(own), DirectoryStatus::Created);
  std::filesystem::create_directory_symlink(own, root.path() / "link");
  std::filesystem::create_directory_symlink(root.path() / "nowhere", root.path() / "dangling");
  for (const char* const end : kEnds) {
    EXPECT_EQ(Make(root.path() / "link", end), DirectoryStatus::Failed) << end;
    EXPECT_EQ(Make(root.path() / "dangling", end), DirectoryStatus::Failed) << end;
    EXPECT_FALSE(RemoveEmptyDirectory(
        std::filesystem::path((root.path() / "link").string() + end).u16string().c_str()))
        << end;
  }
  EXPECT_EQ(root.listing(), "dangling link own");
}

TEST(DirectoriesOfPosix, AreNoFiles) {
  const test::TempDirectory root;
  root.write("file", "x");
  ASSERT_EQ(mkfifo((root.path() / "pipe").c_str(), 0600), 0);
  for (const char* const end : kEnds) {
    EXPECT_EQ(Make(root.path() / "file", end), DirectoryStatus::Failed) << end;
    EXPECT_EQ(Make(root.path() / "pipe", end), DirectoryStatus::Failed) << end;
  }
  EXPECT_EQ(root.listing(), "file pipe");
}

TEST(DirectoriesOfPosix, ThatAreTheRootKeepTheirSeparator) {
  const bool isSuperuser = geteuid() == 0;
  EXPECT_EQ(MakeDirectory(u"/"),
            isSuperuser ? DirectoryStatus::AlreadyExisted : DirectoryStatus::Failed);
  EXPECT_FALSE(RemoveEmptyDirectory(u"/"));
}

TEST(DirectoriesOfPosix, HaveNamesInUtf8) {
  const test::TempDirectory root;
  EXPECT_EQ(MakeDirectory((root.wide() + u"/\u00E4\u3042\U0001F600").c_str()),
            DirectoryStatus::Created);
  EXPECT_EQ(root.listing(), "\xC3\xA4\xE3\x81\x82\xF0\x9F\x98\x80");
}

TEST(DirectoriesOfPosix, HaveALimitInBytes) {
  const test::TempDirectory root;
  // Shorter than the limit in units.
  EXPECT_EQ(MakeDirectory((root.wide() + u"/" + std::u16string(2000, u'\u3042')).c_str()),
            DirectoryStatus::Failed);
  EXPECT_EQ(root.listing(), "");
}

}  // namespace
}  // namespace tarn::platform
