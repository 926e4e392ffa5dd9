// The folder that pages go to, where pages are made. posix/PageFolderTest.cpp has permissions and
// links.

#include "tarnmail/PageFolder.h"

#include <gtest/gtest.h>

#include "console/Failure.h"
#include "console/Paths.h"
#include "support/TempDirectory.h"

namespace tarn::host {
namespace {

namespace fs = std::filesystem;

class PageFolderTest : public ::testing::Test {
 protected:
  std::string place(const std::string& name) const {
    return Utf8FromPath(directory_.path()) + "/" + name;
  }

  // What the folder is refused with.
  std::string refusal(const std::string& name) const {
    try {
      PageFolder folder(name, "mail");
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.status(), ExitStatus::Usage);
      return failure.what();
    }
    return "";
  }

  const test::TempDirectory directory_;
};

TEST_F(PageFolderTest, IsMadeWithAllItsPages) {
  PageFolder folder(place("pages"), "mail");
  folder.write(1, "one");
  folder.write(12, "twelve");
  EXPECT_FALSE(fs::exists(directory_.path() / "pages"));
  folder.putInPlace();
  EXPECT_EQ(directory_.listing(), "pages pages/page-0001.png pages/page-0012.png");
  EXPECT_EQ(test::ReadWholeFile(directory_.path() / "pages/page-0012.png"), "twelve");
}

TEST_F(PageFolderTest, MayEndWithASlash) {
  PageFolder folder(place("pages/"), "mail");
  folder.write(1, "one");
  folder.putInPlace();
  EXPECT_EQ(directory_.listing(), "pages pages/page-0001.png");
}

TEST_F(PageFolderTest, LeavesNothingBehindUnlessItIsPutInPlace) {
  fs::create_directory(directory_.path() / "old");
  {
    PageFolder made(place("pages"), "mail");
    made.write(1, "one");
    PageFolder old(place("old"), "mail");
    old.write(1, "one");
  }
  EXPECT_EQ(directory_.listing(), "old");
}

TEST_F(PageFolderTest, ReplacesPagesOfTheSameNamesAlone) {
  fs::create_directory(directory_.path() / "old");
  for (const char* name : {"old/page-0001.png", "old/page-0003.png", "old/notes"}) {
    directory_.write(name, "old");
  }
  PageFolder folder(place("old"), "mail");
  folder.write(1, "one");
  folder.write(2, "two");
  EXPECT_EQ(test::ReadWholeFile(directory_.path() / "old/page-0001.png"), "old");
  folder.putInPlace();
  EXPECT_EQ(test::ReadWholeFile(directory_.path() / "old/page-0001.png"), "one");
  EXPECT_EQ(test::ReadWholeFile(directory_.path() / "old/page-0003.png"), "old");
}

TEST_F(PageFolderTest, LeavesNothingHiddenInAFolderThatIsThere) {
  fs::create_directory(directory_.path() / "old");
  {
    PageFolder folder(place("old"), "mail");
    folder.write(1, "one");
    folder.putInPlace();
  }
  EXPECT_EQ(directory_.listing(), "old old/page-0001.png");
}

TEST_F(PageFolderTest, RefusesPlacesThatAreNoFolder) {
  directory_.write("file", "f");
  EXPECT_EQ(refusal(place("file")), place("file") + ": is not a folder");
  EXPECT_EQ(refusal(""), "empty name of the output folder");
  EXPECT_NE(refusal(place("none/pages")), "");
  EXPECT_EQ(directory_.listing(), "file");
}

TEST_F(PageFolderTest, RefusesPagesThatMayNotBeReplaced) {
  fs::create_directories(directory_.path() / "old/page-0001.png");
  directory_.write("old/page-0002.png", "mail");
  PageFolder folder(place("old"), place("old/page-0002.png"));
  EXPECT_THROW(folder.write(1, "one"), Failure);
  EXPECT_THROW(folder.write(2, "two"), Failure);
  EXPECT_EQ(test::ReadWholeFile(directory_.path() / "old/page-0002.png"), "mail");
}

TEST(PageFileName, HasFourDigitsOrMore) {
  EXPECT_EQ(PageFileName(1), "page-0001.png");
  EXPECT_EQ(PageFileName(9999), "page-9999.png");
  EXPECT_EQ(PageFileName(12345), "page-12345.png");
}

}  // namespace
}  // namespace tarn::host
