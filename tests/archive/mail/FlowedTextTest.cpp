#include "archive/mail/FlowedText.h"

#include <gtest/gtest.h>

namespace tarn::archive::mail {
namespace {

TEST(FlowedTextTest, JoinsLinesThatEndWithABlank) {
  EXPECT_EQ(UnflowText("one \ntwo\nthree\n", false), "one two\nthree\n");
  EXPECT_EQ(UnflowText("one \ntwo", true), "onetwo\n");
  EXPECT_EQ(UnflowText("one ", false), "one \n");
  EXPECT_EQ(UnflowText("", false), "");
  EXPECT_EQ(UnflowText("\n\n", false), "\n\n");
}

TEST(FlowedTextTest, TakesStuffedBlanksAway) {
  EXPECT_EQ(UnflowText(" From me\n  two\n >quoted not\n", false), "From me\n two\n>quoted not\n");
}

TEST(FlowedTextTest, EndsAParagraphWhereTheQuoteIsAnother) {
  EXPECT_EQ(UnflowText("> a \n>> b \n> c\n", false), "> a \n>> b \n> c\n");
  EXPECT_EQ(UnflowText(">> a \n>>b\n", false), ">> a b\n");
}

TEST(FlowedTextTest, KeepsTheMarkOfASignature) {
  EXPECT_EQ(UnflowText("text \n-- \nAnn\n", false), "text \n-- \nAnn\n");
  EXPECT_EQ(UnflowText("> -- \n> Ann\n", false), "> -- \n> Ann\n");
}

}  // namespace
}  // namespace tarn::archive::mail
