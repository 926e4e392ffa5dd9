// PageOutput.h - where pages go: into a bitmap or into a PDF.
#ifndef TARN_SIBLINGS_LAYOUT_PAGEOUTPUT_H
#define TARN_SIBLINGS_LAYOUT_PAGEOUTPUT_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "siblings/Pages.h"
#include "siblings/layout/Engine.h"
#include "siblings/layout/LibraryHandles.h"

namespace tarn::pages {

enum class Target : uint8_t { Bitmap, Pdf };

// Draws one page, in points from its top left corner. Links are of use in a PDF only.
using DrawPage = std::function<void(cairo_t* context, int32_t page, Target target)>;

// A page on white. Trouble::TooLarge when it has more pixels than kMostPixels, or no pixel at all.
Bitmap DrawBitmap(PageSize size, int32_t page, int32_t dotsPerInch, const DrawPage& draw);
inline constexpr int64_t kMostPixels = 150'000'000;

// What a PDF is made of.
struct PdfRequest {
  PageSize size;
  int32_t pageCount = 0;
  PageRange range;
  const PdfProperties& properties;
};

// The pages of a range, cut to those that there are. Trouble::NoSuchPage when there are none of
// them; Trouble::Stopped when the progress says so. Its id comes from its content.
std::string WritePdf(const PdfRequest& request, const DrawPage& draw, Progress& progress);

// A link on a rectangle, in the context's coordinates. Addresses may hold any bytes.
void AddLink(cairo_t* context, const std::string& address, const cairo_rectangle_t& place);

// A place, so many points from the top of the page, that links within a PDF lead to. Its number is
// its own in the file. A link to a place that is on no page fails the file.
void AddPlace(cairo_t* context, size_t number, double top);
void AddInnerLink(cairo_t* context, size_t number, const cairo_rectangle_t& place);

}  // namespace tarn::pages

#endif
