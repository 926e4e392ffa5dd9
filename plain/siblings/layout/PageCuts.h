// PageCuts.h - where an endless sheet is cut into pages.
//
// A page ends where no line of text and no picture is cut in two, and if it can be not within a row
// of a table. What is higher than a page is cut where the page ends.
#ifndef TARN_SIBLINGS_LAYOUT_PAGECUTS_H
#define TARN_SIBLINGS_LAYOUT_PAGECUTS_H

#include <cstddef>
#include <vector>

namespace tarn::pages {

struct Extent {
  double top = 0;
  double bottom = 0;
};

struct SheetExtents {
  std::vector<Extent> whole;     // lines of text and pictures: not to be cut
  std::vector<Extent> together;  // rows: rather not
  std::vector<Extent> content;   // all that is worth a page
};

inline constexpr size_t kMostHtmlPages = 10'000;

// Where the pages begin; the first at 0. Trouble::TooLarge when there would be too many.
std::vector<double> CutPages(SheetExtents sheet, double pageHeight);

}  // namespace tarn::pages

#endif
