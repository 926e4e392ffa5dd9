#include "siblings/office/PageRectangles.h"

#include <algorithm>
#include <charconv>

namespace tarn::pages {

namespace {

bool ReadNumber(std::string_view& text, int32_t& number) {
  const size_t start = text.find_first_not_of(" ,;");
  if (start == std::string_view::npos) return false;
  const auto result = std::from_chars(text.data() + start, text.data() + text.size(), number);
  text.remove_prefix(static_cast<size_t>(result.ptr - text.data()));
  return result.ec == std::errc();
}

}  // namespace

std::vector<PageRectangle> ParsePageRectangles(std::string_view text) {
  std::vector<PageRectangle> rectangles;
  PageRectangle page;
  while (ReadNumber(text, page.x) && ReadNumber(text, page.y) && ReadNumber(text, page.width) &&
         ReadNumber(text, page.height)) {
    if (page.width > 0 && page.height > 0) rectangles.push_back(page);
  }
  return rectangles;
}

PageSize SizeOf(const PageRectangle& rectangle) {
  constexpr double kTwipsPerPoint = 20;
  return {rectangle.width / kTwipsPerPoint, rectangle.height / kTwipsPerPoint};
}

std::vector<Strip> StripsOf(int32_t width, int32_t height, int32_t dotsPerInch) {
  const int64_t pixelsPerInch = int64_t{width} * dotsPerInch;
  const auto inches = static_cast<int32_t>(std::max<int64_t>(kMostStripPixels / pixelsPerInch, 1));
  const int64_t fullStrip = int64_t{inches} * dotsPerInch;
  std::vector<Strip> strips;
  for (int64_t row = 0; row < height; row += fullStrip) {
    const int64_t rows = std::min<int64_t>(fullStrip, height - row);
    strips.push_back(
        {static_cast<int32_t>(row), static_cast<int32_t>(rows),
         static_cast<int32_t>(row * kTwipsPerInch / dotsPerInch),
         static_cast<int32_t>((rows * kTwipsPerInch + dotsPerInch / 2) / dotsPerInch)});
  }
  return strips;
}

}  // namespace tarn::pages
