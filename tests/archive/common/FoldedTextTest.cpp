#include "archive/common/FoldedText.h"

#include <gtest/gtest.h>

namespace tarn::archive {
namespace {

TEST(FoldedText, IsWithoutCaseWidthAndLigatures) {
  EXPECT_EQ(Folded(""), "");
  EXPECT_EQ(Folded("Re: HELLO, 1"), "re: hello, 1");
  EXPECT_EQ(Folded("STRASSE"), Folded("straße"));
  EXPECT_EQ(Folded("ΣΊΣΥΦΟΣ"), Folded("σίσυφος"));
  EXPECT_EQ(Folded("ＡＢＣ１"), "abc1");
  EXPECT_EQ(Folded("ﬁne"), "fine");
}

TEST(FoldedText, IsTheSameHoweverItsMarksAreWritten) {
  EXPECT_EQ(Folded("Mu\u0308ller"), Folded("MÜLLER"));
  EXPECT_EQ(Folded("in\u00ADvisible\u200B"), "invisible");
}

TEST(FoldedText, TakesWhatIsNoUtf8) {
  EXPECT_EQ(Folded("a\xFF"
                   "B"),
            "a\uFFFDb");
  EXPECT_EQ(Folded("\xE2\x82"), "\uFFFD");
}

TEST(FoldedText, MayBecomeMuchLongerThanItWas) {
  std::string text;
  std::string folded;
  for (int i = 0; i < 1000; ++i) {
    text += "\uFDFA";  // one character that stands for eighteen
    folded += "صلى الله عليه وسلم";
  }
  EXPECT_EQ(Folded(text), folded);
}

TEST(FoldedText, HoldsAPart) {
  EXPECT_TRUE(HoldsFolded("An die Straße", Folded("STRASSE")));
  EXPECT_TRUE(HoldsFolded("anything", ""));
  EXPECT_FALSE(HoldsFolded("An die Strase", Folded("straße")));
}

}  // namespace
}  // namespace tarn::archive
