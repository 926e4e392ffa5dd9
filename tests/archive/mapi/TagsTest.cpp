#include "archive/mapi/Tags.h"

#include <gtest/gtest.h>

#include "archive/mapi/CodePageNames.h"

namespace tarn::archive::mapi {
namespace {

TEST(TagsTest, TellsCanonicalNames) {
  EXPECT_EQ(NameOfTag(0x0037), "PidTagSubject");
  EXPECT_EQ(NameOfTag(0x001A), "PidTagMessageClass");
  EXPECT_EQ(NameOfTag(0x7FFE), "PidTagAttachmentHidden");
  EXPECT_EQ(NameOfTag(0x0038), "");
  EXPECT_EQ(NameOfTag(0xFFFF), "");
}

TEST(TagsTest, DescribesForPeople) {
  EXPECT_EQ(DescribeTag(0x0037), "PidTagSubject (0x0037)");
  EXPECT_EQ(DescribeTag(0x80AF), "0x80AF");
}

TEST(CodePageNamesTest, AreCharsets) {
  EXPECT_EQ(CharsetOfCodePage(437), "ibm437");
  EXPECT_EQ(CharsetOfCodePage(1252), "windows-1252");
  EXPECT_EQ(CharsetOfCodePage(50220), "iso-2022-jp");
  EXPECT_EQ(CharsetOfCodePage(65001), "utf-8");
  EXPECT_EQ(CharsetOfCodePage(0), "");
  EXPECT_EQ(CharsetOfCodePage(65002), "");
}

}  // namespace
}  // namespace tarn::archive::mapi
