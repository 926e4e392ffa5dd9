// PageLook.h - how dark the places of a page are: a picture that can be compared with another one,
// or with one that was written down.
//
// A page is seen in squares of a quarter of an inch. A look that is written down has a line for
// each row of squares and a digit for each square: 0 is white, 9 is as dark as a letter of a
// headline.
#ifndef TARN_TESTS_SIBLINGS_PAGES_PAGELOOK_H
#define TARN_TESTS_SIBLINGS_PAGES_PAGELOOK_H

#include <cstdint>
#include <string>
#include <vector>

#include "siblings/Pages.h"

namespace tarn::test {

struct PageLook {
  int32_t columns = 0;
  std::vector<double> darkness;  // row by row, 0 (white) to 255 (black)
};

PageLook LookOf(const pages::Bitmap& bitmap, int32_t dotsPerInch);

std::string WrittenLook(const PageLook& look);

// The largest difference between two squares in the same place, and the mean of all differences.
// 255 both when the looks are not of one size.
struct LookDifference {
  double largest = 255;
  double mean = 255;
};

LookDifference Compare(const PageLook& one, const PageLook& other);

// In digits.
LookDifference CompareWritten(const std::string& one, const std::string& other);

// A page of a PDF as pdftoppm of poppler-utils draws it.
pages::Bitmap RenderedPage(const std::string& pdf, int32_t page, int32_t dotsPerInch);

}  // namespace tarn::test

#endif
