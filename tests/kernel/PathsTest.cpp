#include "Paths.h"

#include <gtest/gtest.h>

#include "PathRules.h"

namespace tarn::kernel {
namespace {

TEST(Paths, WideBecomesUtf8) {
  EXPECT_EQ(PathFromWide(u"C:\\\u00E4/\U0001F600"), "C:\\\xC3\xA4/\xF0\x9F\x98\x80");
  EXPECT_EQ(PathFromWide(nullptr), "");
  EXPECT_EQ(PathFromWide(u""), "");
  EXPECT_EQ(PathFromWide(u"a\xD800"), "");
  EXPECT_EQ(PathFromWide(u"\xDC00z"), "");
}

TEST(Paths, Directories) {
  EXPECT_EQ(DirectoryOf("a/b"), "a");
  EXPECT_EQ(DirectoryOf("/a/b/c"), "/a/b");
  EXPECT_EQ(DirectoryOf("/a"), "/");
  EXPECT_EQ(DirectoryOf("a"), ".");
  EXPECT_EQ(DirectoryOf("a\\b"), ".");
}

TEST(Paths, LastComponents) {
  EXPECT_EQ(LastComponent("a/b"), "b");
  EXPECT_EQ(LastComponent("a/b\\c"), "c");
  EXPECT_EQ(LastComponent("a\\b/c"), "c");
  EXPECT_EQ(LastComponent("a"), "a");
  EXPECT_EQ(LastComponent("a/"), "");
  EXPECT_EQ(LastComponent("\\"), "");
  EXPECT_EQ(LastComponent(""), "");
}

TEST(Paths, ClimbingIsAWholeComponent) {
  EXPECT_TRUE(ClimbsUp(".."));
  EXPECT_TRUE(ClimbsUp("../a"));
  EXPECT_TRUE(ClimbsUp("a\\.."));
  EXPECT_TRUE(ClimbsUp("a/..\\b"));
  EXPECT_FALSE(ClimbsUp(""));
  EXPECT_FALSE(ClimbsUp("a/...b"));
  EXPECT_FALSE(ClimbsUp("a../b"));
  EXPECT_FALSE(ClimbsUp("./a/."));
}

}  // namespace
}  // namespace tarn::kernel
