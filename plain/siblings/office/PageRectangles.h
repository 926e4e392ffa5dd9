// PageRectangles.h - where the pages of a document are.
//
// The office library lays them out below each other on one sheet, and tells their places in
// twips, 1/1440 inch, as "x, y, width, height; x, y, width, height".
#ifndef TARN_SIBLINGS_OFFICE_PAGERECTANGLES_H
#define TARN_SIBLINGS_OFFICE_PAGERECTANGLES_H

#include <cstdint>
#include <string_view>
#include <vector>

#include "siblings/Pages.h"

namespace tarn::pages {

inline constexpr int32_t kTwipsPerInch = 1440;

struct PageRectangle {
  int32_t x = 0;
  int32_t y = 0;
  int32_t width = 0;
  int32_t height = 0;
};

// The pages up to the first that is not written so. What has no area is the back of a sheet that a
// section leaves empty, and no page.
std::vector<PageRectangle> ParsePageRectangles(std::string_view text);

PageSize SizeOf(const PageRectangle& rectangle);

// Some rows of a page's bitmap, and the part of the page that they show, in twips from its top.
struct Strip {
  int32_t firstRow = 0;
  int32_t rows = 0;
  int32_t top = 0;
  int32_t height = 0;
};

// Cuts a bitmap of that many pixels into strips of whole inches, so that each begins on a whole
// twip and on a whole pixel; each has no more than kMostStripPixels, or is one inch high.
std::vector<Strip> StripsOf(int32_t width, int32_t height, int32_t dotsPerInch);
inline constexpr int64_t kMostStripPixels = 4'000'000;

}  // namespace tarn::pages

#endif
