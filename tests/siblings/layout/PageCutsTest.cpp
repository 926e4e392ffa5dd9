#include "siblings/layout/PageCuts.h"

#include <gtest/gtest.h>

#include "siblings/Pages.h"

namespace tarn::test {
namespace {

using namespace tarn::pages;
using Tops = std::vector<double>;

// Lines of 20 from a place on.
void AddLines(SheetExtents& sheet, double top, int count) {
  for (int i = 0; i < count; ++i) {
    sheet.whole.push_back({top + 20 * i, top + 20 * i + 20});
    sheet.content.push_back(sheet.whole.back());
  }
}

TEST(PageCuts, NothingIsOnePage) { EXPECT_EQ(CutPages({}, 100), Tops{0}); }

TEST(PageCuts, PagesEndBetweenLines) {
  SheetExtents sheet;
  AddLines(sheet, 0, 10);
  EXPECT_EQ(CutPages(sheet, 100), (Tops{0, 100}));
  EXPECT_EQ(CutPages(sheet, 200), Tops{0});
  EXPECT_EQ(CutPages(sheet, 90), (Tops{0, 80, 160}));
}

TEST(PageCuts, APictureGoesToTheNextPage) {
  SheetExtents sheet;
  AddLines(sheet, 0, 4);
  sheet.whole.push_back({80, 160});
  sheet.content.push_back({80, 160});
  EXPECT_EQ(CutPages(sheet, 100), (Tops{0, 80}));
}

TEST(PageCuts, WhatIsHigherThanAPageIsCut) {
  SheetExtents sheet;
  sheet.whole.push_back({0, 250});
  sheet.content.push_back({0, 250});
  EXPECT_EQ(CutPages(sheet, 100), (Tops{0, 100, 200}));
}

TEST(PageCuts, ARowStaysTogetherIfThePageIsFullEnough) {
  SheetExtents sheet;
  AddLines(sheet, 0, 10);
  sheet.together.push_back({80, 140});
  EXPECT_EQ(CutPages(sheet, 100), (Tops{0, 80, 180}));
  sheet.together = {{40, 100.5}, {40, 140}};
  EXPECT_EQ(CutPages(sheet, 100), (Tops{0, 100}));
}

TEST(PageCuts, LinesOfColumnsThatAlternateAreCutAtThePage) {
  SheetExtents sheet;
  AddLines(sheet, 0, 20);
  AddLines(sheet, 10, 20);
  const Tops tops = CutPages(sheet, 105);
  ASSERT_GE(tops.size(), 4u);
  EXPECT_EQ(tops[1], 105);
}

TEST(PageCuts, AGapIsNoPage) {
  SheetExtents sheet;
  AddLines(sheet, 0, 1);
  AddLines(sheet, 1e8, 1);
  EXPECT_EQ(CutPages(sheet, 100), (Tops{0, 1e8}));
}

TEST(PageCuts, TooManyPagesAreRefused) {
  SheetExtents sheet;
  AddLines(sheet, 0, 50'000);
  EXPECT_EQ(CutPages(sheet, 100).size(), kMostHtmlPages);
  AddLines(sheet, 1'000'000, 1);
  try {
    CutPages(sheet, 100);
    FAIL();
  } catch (const PageFailure& failure) {
    EXPECT_EQ(failure.trouble(), Trouble::TooLarge);
  }
}

}  // namespace
}  // namespace tarn::test
