#include "siblings/layout/PageCuts.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "siblings/Pages.h"

namespace tarn::pages {

namespace {

// Edges may touch, and positions are rounded to pixels.
constexpr double kOverlap = 1;
// A row is moved to the next page if that leaves so much of this one filled.
constexpr double kLeastFilled = 0.6;

// Extents in the order of their tops, with what is known of those up to each.
class ExtentList {
 public:
  explicit ExtentList(std::vector<Extent> extents) : extents_(std::move(extents)) {
    std::sort(extents_.begin(), extents_.end(),
              [](const Extent& a, const Extent& b) { return a.top < b.top; });
    double lowest = 0;
    for (const Extent& extent : extents_) {
      lowest = std::max(lowest, extent.bottom);
      lowest_.push_back(lowest);
    }
  }

  // Where what reaches below a place begins, or the place itself if that is above; nothing when all
  // ends before it.
  std::optional<double> firstBelow(double place) const {
    const auto at = std::upper_bound(lowest_.begin(), lowest_.end(), place);
    if (at == lowest_.end()) return std::nullopt;
    return std::max(place, extents_[static_cast<size_t>(at - lowest_.begin())].top);
  }

  // The highest top of those that a cut would go through; the cut itself when there are none.
  // Those that begin above the page, or are higher than it, do not count.
  double firstThrough(double cut, double pageTop, double tallest) const {
    const auto after =
        std::partition_point(extents_.begin(), extents_.end(),
                             [&](const Extent& extent) { return extent.top < cut - kOverlap; });
    double first = cut;
    for (auto at = static_cast<size_t>(after - extents_.begin()); at-- > 0;) {
      const Extent& extent = extents_[at];
      if (lowest_[at] <= cut + kOverlap || extent.top < pageTop) break;
      if (extent.bottom > cut + kOverlap && extent.bottom - extent.top <= tallest) {
        first = std::min(first, extent.top);
      }
    }
    return first;
  }

 private:
  std::vector<Extent> extents_;
  std::vector<double> lowest_;  // bottom among the extents up to that one
};

// A place at or above the cut that goes through nothing; the page's top when there is none.
double MoveUp(const ExtentList& extents, double cut, double pageTop, double tallest) {
  while (cut > pageTop) {
    const double moved = extents.firstThrough(cut, pageTop, tallest);
    if (moved == cut) break;
    cut = moved;
  }
  return cut;
}

}  // namespace

std::vector<double> CutPages(SheetExtents sheet, double pageHeight) {
  const ExtentList whole(std::move(sheet.whole));
  const ExtentList together(std::move(sheet.together));
  const ExtentList content(std::move(sheet.content));
  std::vector<double> tops = {0};
  while (true) {
    // cppcheck-suppress containerOutOfBounds ; it begins with one and only grows
    const double top = tops.back();
    const double end = top + pageHeight;
    const std::optional<double> next = content.firstBelow(end + kOverlap);
    if (!next) break;
    if (tops.size() >= kMostHtmlPages) {
      throw PageFailure(Trouble::TooLarge, "the document has too many pages");
    }
    const double row = MoveUp(together, end, top, pageHeight * kLeastFilled);
    double cut = MoveUp(whole, row < top + pageHeight * kLeastFilled ? end : row, top, pageHeight);
    if (cut < top + pageHeight * kLeastFilled) {
      cut = std::max(cut, MoveUp(whole, end, top, pageHeight));
    }
    if (cut <= top + kOverlap) cut = end;
    tops.push_back(*next > cut + pageHeight ? *next : cut);
  }
  return tops;
}

}  // namespace tarn::pages
