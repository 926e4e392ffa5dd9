#include "siblings/layout/BidiLines.h"

#include <gtest/gtest.h>

namespace tarn::test {
namespace {

using namespace tarn::pages;

// The order of words given as l, r and n, each shown by its number.
std::string Order(const std::string& words) {
  std::vector<WordDirection> directions;
  for (const char word : words) {
    directions.push_back(word == 'l'   ? WordDirection::LeftToRight
                         : word == 'r' ? WordDirection::RightToLeft
                                       : WordDirection::Neutral);
  }
  std::string order;
  for (const size_t index : VisualOrder(directions)) order += static_cast<char>('0' + index);
  return order;
}

TEST(BidiLines, LinesOfOneDirection) {
  EXPECT_EQ(Order("lnlnl"), "01234");
  EXPECT_EQ(Order("rnrnr"), "43210");
  EXPECT_EQ(Order("nnn"), "012");
  EXPECT_EQ(Order(""), "");
}

TEST(BidiLines, WordsAgainstTheLineKeepTheirOwnOrder) {
  EXPECT_EQ(Order("lnrnrnl"), "0143256");
  EXPECT_EQ(Order("rnlnlnr"), "6523410");
}

TEST(BidiLines, NeutralWordsAtAnEdgeBelongToTheLine) {
  EXPECT_EQ(Order("nrnln"), "43210");
  EXPECT_EQ(Order("lrn"), "012");
}

}  // namespace
}  // namespace tarn::test
