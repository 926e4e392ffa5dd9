// DisplayPainter.h - draws the part of a display list that is on one page.
#ifndef TARN_SIBLINGS_LAYOUT_DISPLAYPAINTER_H
#define TARN_SIBLINGS_LAYOUT_DISPLAYPAINTER_H

#include <cairo.h>

#include <cstddef>
#include <functional>
#include <vector>

#include "siblings/layout/DisplayList.h"
#include "siblings/layout/PageOutput.h"

namespace tarn::pages {

// The part of the sheet that a page shows.
struct PageBand {
  double top = 0;
  double bottom = 0;
  std::vector<uint32_t> items;  // those of the list that are on it, in its order
};

// The bands of pages that begin at these places, the last one ending there. A line of text is on
// one page alone: on that of its bottom.
std::vector<PageBand> MakeBands(const DisplayList& list, const std::vector<double>& tops,
                                double bottom);

// Puts a link of the list, by its number, on a box of the page.
using PlaceLink = std::function<void(size_t link, const cairo_rectangle_t& box)>;

// The context is in the pixels of the sheet, with the band where it belongs on the paper. Without a
// function for links there are none.
void PaintBand(cairo_t* context, const DisplayList& list, const PageBand& band,
               const PlaceLink& placeLink);

}  // namespace tarn::pages

#endif
