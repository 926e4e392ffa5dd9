#include "PathRules.h"

#include <gtest/gtest.h>

namespace tarn::kernel {
namespace {

TEST(PathRules, OneSpellingForOneFile) {
  EXPECT_EQ(OneSpelling("/tmp/a"), "/tmp/a");
  EXPECT_EQ(OneSpelling("\\tmp\\a"), "/tmp/a");
  EXPECT_EQ(OneSpelling("//tmp\\/./a"), "/tmp/a");
  EXPECT_EQ(OneSpelling("a\\b"), "a/b");
  EXPECT_EQ(OneSpelling("./a"), "a");
  EXPECT_EQ(OneSpelling("/tmp/A"), "/tmp/A");
  EXPECT_EQ(OneSpelling("a. "), "a. ");
  EXPECT_EQ(OneSpelling("/"), "/");
  EXPECT_EQ(OneSpelling(""), "");
}

TEST(PathRules, OnlyClimbingKeepsATemporaryFromItsName) {
  for (const char* const name : {"a", "a:b", "NUL", "a/b\\c", "...", ".. ", "a?", "a/./b"}) {
    EXPECT_TRUE(MayNameTemporary(name)) << name;
    EXPECT_TRUE(MayHoldTemporaries(name)) << name;
  }
  for (const char* const name : {"", "..", "a/..", "a\\..\\b"}) {
    EXPECT_FALSE(MayNameTemporary(name)) << name;
    EXPECT_FALSE(MayHoldTemporaries(name)) << name;
  }
}

TEST(PathRules, WithoutANameAtTheEndItIsADirectory) {
  for (const char* const name : {"/", "\\", "a/", "a\\", "a//", ".", "a/.", "a\\.", "a/./"}) {
    EXPECT_FALSE(MayNameTemporary(name)) << name;
    EXPECT_TRUE(MayHoldTemporaries(name)) << name;
  }
}

TEST(PathRules, OthersFindAFileByTheSameName) {
  for (const char* const name : {"/tmp/a", "a\\b", "\\\\?\\C:\\a"})
    EXPECT_EQ(SpellingForOthers(name), name);
}

}  // namespace
}  // namespace tarn::kernel
