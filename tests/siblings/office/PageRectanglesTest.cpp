// Where pages are, and how a bitmap is cut into strips.
#include "siblings/office/PageRectangles.h"

#include <gtest/gtest.h>

namespace tarn::pages {
namespace {

TEST(PageRectangles, ReadsWhatTheLibraryTells) {
  const auto pages = ParsePageRectangles("284, 284, 11906, 16838; 284, 17406, 12240, 15840");
  ASSERT_EQ(pages.size(), 2u);
  EXPECT_EQ(pages[1].x, 284);
  EXPECT_EQ(pages[1].y, 17406);
  EXPECT_EQ(pages[1].width, 12240);
  EXPECT_EQ(SizeOf(pages[1]).width, 612);
  EXPECT_EQ(SizeOf(pages[1]).height, 792);
}

TEST(PageRectangles, StopsAtWhatItCannotRead) {
  EXPECT_EQ(ParsePageRectangles("").size(), 0u);
  EXPECT_EQ(ParsePageRectangles("1, 2, 3").size(), 0u);
  EXPECT_EQ(ParsePageRectangles("1, 2, 3, 4; 5, 6, x").size(), 1u);
  EXPECT_EQ(ParsePageRectangles("99999999999, 2, 3, 4").size(), 0u);
}

TEST(PageRectangles, PassesSidesThatAreLeftEmpty) {
  const auto pages = ParsePageRectangles("1, 2, 3, 4; 5, 6, 0, 0; 1, 9, 3, 4");
  ASSERT_EQ(pages.size(), 2u);
  EXPECT_EQ(pages[1].y, 9);
}

TEST(PageRectangles, ASmallBitmapIsOneStrip) {
  const auto strips = StripsOf(794, 1123, 96);
  ASSERT_EQ(strips.size(), 1u);
  EXPECT_EQ(strips[0].rows, 1123);
  EXPECT_EQ(strips[0].height, 16845);  // 1123 rows of 15 twips
}

TEST(PageRectangles, StripsFollowEachOtherOnWholeInches) {
  const auto strips = StripsOf(4961, 7016, 600);
  ASSERT_GT(strips.size(), 1u);
  int32_t row = 0;
  for (const Strip& strip : strips) {
    EXPECT_EQ(strip.firstRow, row);
    EXPECT_EQ(strip.firstRow % 600, 0);
    EXPECT_EQ(strip.top, strip.firstRow / 600 * kTwipsPerInch);
    EXPECT_LE(int64_t{strip.rows} * 4961, kMostStripPixels);
    row += strip.rows;
  }
  EXPECT_EQ(row, 7016);
}

TEST(PageRectangles, AStripIsAnInchAtLeast) {
  const auto strips = StripsOf(30000, 2500, 1000);
  ASSERT_EQ(strips.size(), 3u);
  EXPECT_EQ(strips[0].rows, 1000);
  EXPECT_EQ(strips[2].rows, 500);
}

}  // namespace
}  // namespace tarn::pages
