// Where a temporary file is taken to be below the trusted directory, and where not: what matters is
// the spelling of both, and no link is followed only below it.
#include "ParentDirectory.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>

#include "Scratch.h"

namespace tarn::test {
namespace {

namespace fs = std::filesystem;
using kernel::ParentDirectory;

class ParentDirectories : public Scratch {
 protected:
  ParentDirectories() {
    fs::create_directories(NativePathOf("temp/real/deep"));
    fs::create_directory_symlink(NativePathOf("temp/real"), NativePathOf("temp/link"));
    fs::current_path(NativePathOf("temp"));
  }
  ~ParentDirectories() override {
    std::error_code ignored;
    fs::current_path(former_, ignored);
  }

  // 0, or the error of the system.
  static int Error(const std::string& path, const std::string& trusted) {
    const ParentDirectory parent({path, trusted});
    if (!parent.IsOpen()) return errno;
    EXPECT_EQ(std::string(parent.name()), "file");
    return 0;
  }

 private:
  fs::path former_ = fs::current_path();
};

TEST_F(ParentDirectories, BelowTheTrustedOneNoLinkIsFollowed) {
  const std::string temp = PathOf("temp");
  EXPECT_EQ(Error(temp + "/file", temp), 0);
  EXPECT_EQ(Error(temp + "/real/deep/file", temp), 0);
  EXPECT_EQ(Error(temp + "/link/file", temp), ENOTDIR);
  EXPECT_EQ(Error(temp + "\\link\\deep\\file", temp), ENOTDIR);
  EXPECT_EQ(Error(temp + "/none/file", temp), ENOENT);
  EXPECT_EQ(Error("link/file", "."), ENOTDIR);
  EXPECT_EQ(Error("real/deep/file", "real"), 0);
}

TEST_F(ParentDirectories, ElsewhereLinksAreTheCallersChoice) {
  const std::string link = PathOf("temp") + "/link/file";
  EXPECT_EQ(Error(link, ""), 0);
  EXPECT_EQ(Error(link, PathOf("temp/other")), 0);
  EXPECT_EQ(Error(link, PathOf("temp/link/file")), 0);
  EXPECT_EQ(Error(link, PathOf("temp/link/file/deeper")), 0);
  EXPECT_EQ(Error("link/file", PathOf("temp")), 0);
  EXPECT_EQ(Error(link, "."), 0);
  EXPECT_EQ(Error("none/file", PathOf("temp")), ENOENT);
  // The names of both are the same, but one is relative.
  fs::current_path("/");
  EXPECT_EQ(Error(link.substr(1), PathOf("temp")), 0);
  EXPECT_EQ(Error(link, PathOf("temp").substr(1)), 0);
  EXPECT_EQ(Error(link.substr(1), PathOf("temp").substr(1)), ENOTDIR);
}

TEST_F(ParentDirectories, TheTrustedOneItselfMayBeReachedByLinks) {
  const std::string link = PathOf("temp/link");
  EXPECT_EQ(Error(link + "/file", link), 0);
  EXPECT_EQ(Error(link + "/deep/file", link), 0);
  EXPECT_EQ(Error("link/deep/file", "link"), 0);
}

}  // namespace
}  // namespace tarn::test
