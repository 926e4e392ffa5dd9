// Permissions and links of the folder that pages go to.

#include "tarnmail/PageFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "console/Failure.h"
#include "support/TempDirectory.h"

namespace tarn::host {
namespace {

namespace fs = std::filesystem;

TEST(PageFolderOnPosix, HasTheRightsOfAnyFolder) {
  const test::TempDirectory directory;
  const mode_t before = umask(027);
  PageFolder folder((directory.path() / "pages").string(), "mail");
  folder.write(1, "one");
  umask(before);
  folder.putInPlace();
  EXPECT_EQ(fs::status(directory.path() / "pages").permissions(), fs::perms(0750));
  EXPECT_EQ(fs::status(directory.path() / "pages/page-0001.png").permissions(), fs::perms(0640));
}

TEST(PageFolderOnPosix, MayBeALink) {
  const test::TempDirectory directory;
  fs::create_directory(directory.path() / "folder");
  fs::create_directory_symlink("folder", directory.path() / "link");
  {
    PageFolder folder((directory.path() / "link").string(), "mail");
    folder.write(1, "one");
    folder.putInPlace();
  }
  EXPECT_TRUE(fs::is_symlink(directory.path() / "link"));
  EXPECT_TRUE(fs::exists(directory.path() / "folder/page-0001.png"));
}

}  // namespace
}  // namespace tarn::host
