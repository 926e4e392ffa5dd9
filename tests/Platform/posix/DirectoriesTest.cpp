// What directories are only where permissions are bits and names are bytes.
#include "Platform/Directories.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

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
