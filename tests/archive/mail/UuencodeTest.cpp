#include "archive/mail/Uuencode.h"

#include <gtest/gtest.h>

namespace tarn::archive::mail {
namespace {

TEST(UuencodeTest, DecodesLinesWithBlanksCutOffAndLinesThatAreTooLong) {
  EXPECT_EQ(DecodeUuencode("%:&5L;&\\\n"), "hello");
  EXPECT_EQ(DecodeUuencode("%:&5L;&\\ X\r\n"), "hello");
  EXPECT_EQ(DecodeUuencode("#   \n"), std::string(3, '\0'));
  EXPECT_EQ(DecodeUuencode("#\n"), std::string(3, '\0'));
  EXPECT_EQ(DecodeUuencode("#86)C\n#9&5F\n`\n"), "abcdef");
}

TEST(UuencodeTest, KeepsWhatDoesNotEndAsText) {
  const std::string text = "begin 644 a\n#86)C\n";
  EXPECT_EQ(SplitUuencode(text).text, text);
  EXPECT_TRUE(SplitUuencode(text).files.empty());
}

TEST(UuencodeTest, KnowsTheLineThatBegins) {
  for (const std::string line : {"begin 64 a", "begin 64400 a", "begin 644", "begin 648 a",
                                 "begin 644 ", "Begin 644 a", " begin 644 a"}) {
    const std::string text = line + "\n#86)C\n`\nend\n";
    EXPECT_EQ(SplitUuencode(text).text, text) << line;
  }
  const std::string text = "begin 0644 a b \r\n#86)C\r\n`\r\nend\r\n";
  ASSERT_EQ(SplitUuencode(text).files.size(), 1u);
  EXPECT_EQ(SplitUuencode(text).files[0].name, "a b");
  EXPECT_EQ(SplitUuencode(text).text, "");
}

TEST(UuencodeTest, TakesAnEmptyFile) {
  const std::string text = "begin 644 a\n`\nend";
  ASSERT_EQ(SplitUuencode(text).files.size(), 1u);
  EXPECT_EQ(DecodeUuencode(SplitUuencode(text).files[0].lines), "");
}

}  // namespace
}  // namespace tarn::archive::mail
