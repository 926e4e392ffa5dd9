// The directory of a record's images when somebody else takes its name first, in the moment between
// the choice of the name and the making of the directory.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>

#include "Common/InlineImagesFixture.h"

namespace {

// Runs once, just before the next directory is made, with the directory's path.
std::function<void(const std::filesystem::path&)> rival;

}  // namespace

// In place of the system's own, for this program.
extern "C" int mkdir(const char* path, mode_t mode) noexcept {
  if (const auto once = std::exchange(rival, nullptr)) {
    std::string name = path;
    while (name.ends_with('/')) name.pop_back();
    once(name);
  }
  return ::mkdirat(AT_FDCWD, path, mode);
}

namespace tarn::test {
namespace {

class ImageDirectory : public FileRoute {
 protected:
  // What the rewriting answers when a rival is there first.
  Status RewriteAgainst(std::function<void(const std::filesystem::path&)> first) {
    rival = [this, first](const std::filesystem::path& path) {
      taken_ = path;
      first(path);
    };
    const Status result = rewrite(kImage);
    EXPECT_FALSE(taken_.empty()) << "no directory was made";
    return result;
  }

  void ExpectRefused(Status result) {
    EXPECT_EQ(result, StatusCreateFailed);
    EXPECT_EQ(record_.tempDirectory[0], u'\0');
    EXPECT_EQ(record_.inlineFiles.length(), 0U);
    EXPECT_EQ(body_.view(), "<img src=\"cid:a.png\">");
  }

  static void MakeWithMode(const std::filesystem::path& path, mode_t mode) {
    ASSERT_EQ(::mkdirat(AT_FDCWD, path.c_str(), mode), 0);
    ASSERT_EQ(::chmod(path.c_str(), mode), 0);
  }

  std::filesystem::path taken_;
};

TEST_F(ImageDirectory, IsMadeForItsOwnerAlone) {
  const mode_t former = ::umask(0);
  EXPECT_EQ(rewrite(kImage), StatusOk);
  ::umask(former);
  struct stat status = {};
  std::string name = std::filesystem::path(record_.tempDirectory).string();
  name.pop_back();
  ASSERT_EQ(::lstat(name.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0700U);
}

TEST_F(ImageDirectory, MayExistWhenItIsTheUsersAlone) {
  EXPECT_EQ(RewriteAgainst([](const auto& path) { MakeWithMode(path, 0755); }), StatusOk);
  EXPECT_EQ(ReadWholeFile(taken_ / "_a.png"), kImage);
}

TEST_F(ImageDirectory, IsNoneThatOthersMayWriteTo) {
  for (const mode_t mode : {0770u, 0707u, 01777u}) {
    ExpectRefused(RewriteAgainst([mode](const auto& path) { MakeWithMode(path, mode); }));
    EXPECT_TRUE(std::filesystem::is_empty(taken_)) << std::oct << mode;
  }
}

TEST_F(ImageDirectory, IsNoneOfSomebodyElse) {
  if (::geteuid() == 0) {
    ExpectRefused(RewriteAgainst([](const auto& path) {
      MakeWithMode(path, 0700);
      ASSERT_EQ(::chown(path.c_str(), 1, 1), 0);
    }));
    EXPECT_TRUE(std::filesystem::is_empty(taken_));
  } else {
    // Only the superuser can give a directory away; the system has one to hold in its place.
    ExpectRefused(RewriteAgainst(
        [](const auto& path) { std::filesystem::create_directory_symlink("/usr", path); }));
  }
}

TEST_F(ImageDirectory, IsNoLink) {
  const TempDirectory elsewhere;
  ExpectRefused(RewriteAgainst([&elsewhere](const auto& path) {
    std::filesystem::create_directory_symlink(elsewhere.path(), path);
  }));
  EXPECT_EQ(elsewhere.listing(), "");
}

TEST_F(ImageDirectory, IsNoFile) {
  ExpectRefused(
      RewriteAgainst([this](const auto& path) { temp_.write(path.filename().string(), "first"); }));
  EXPECT_EQ(ReadWholeFile(taken_), "first");
}

// Swapped after it was made, which needs rights in its parent: the image is not written.
TEST_F(ImageDirectory, IsNotFollowedWhenItIsALinkByThen) {
  const TempDirectory elsewhere;
  EXPECT_EQ(rewrite(kImage), StatusOk);
  std::string name = std::filesystem::path(record_.tempDirectory).string();
  name.pop_back();
  std::filesystem::rename(name, name + ".away");
  std::filesystem::create_directory_symlink(elsewhere.path(), name);
  setBody("<img src=\"cid:a.png\">");
  EXPECT_EQ(rewrite(kImage), StatusCreateFailed);
  EXPECT_EQ(elsewhere.listing(), "");
  std::filesystem::remove(name);
  std::filesystem::rename(name + ".away", name);
}

}  // namespace
}  // namespace tarn::test
