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

// A word of that exact width, in a box of whole pixels.
PaintedText Word(const ShapedWord& word, double left, double width, double baseline) {
  PaintedText text;
  text.word = &word;
  text.box = {left, baseline - 10, width, 12};
  text.baseline = baseline;
  return text;
}

TEST(BidiLines, WordsOfALineShareItsRoomByTheirWidths) {
  ShapedWord narrow;
  narrow.width = 2.5;
  ShapedWord wide;
  wide.width = 7.5;
  DisplayList list;
  list.items = {Word(narrow, 100, 3, 50), Word(wide, 103, 8, 50), Word(wide, 100, 8, 70)};
  ArrangeWords(list);
  EXPECT_DOUBLE_EQ(BoxOf(list.items[0])->left, 100);
  EXPECT_DOUBLE_EQ(BoxOf(list.items[0])->width, 2.75);
  EXPECT_DOUBLE_EQ(BoxOf(list.items[1])->left, 102.75);
  EXPECT_DOUBLE_EQ(BoxOf(list.items[1])->right(), 111);
  EXPECT_DOUBLE_EQ(BoxOf(list.items[2])->left, 100);
}

}  // namespace
}  // namespace tarn::test
