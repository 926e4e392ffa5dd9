// DisplayList.h - all that a document shows, in the order in which it is painted, on one endless
// sheet. Pages are cut from it, and each draws its part.
//
// Coordinates are pixels of CSS, from the top left corner of the content.
#ifndef TARN_SIBLINGS_LAYOUT_DISPLAYLIST_H
#define TARN_SIBLINGS_LAYOUT_DISPLAYLIST_H

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "siblings/layout/HtmlFonts.h"
#include "siblings/layout/images/Picture.h"

namespace tarn::pages {

struct Colour {
  uint8_t red = 0;
  uint8_t green = 0;
  uint8_t blue = 0;
  uint8_t alpha = 255;

  bool operator==(const Colour&) const = default;
};

struct Box {
  double left = 0;
  double top = 0;
  double width = 0;
  double height = 0;

  double right() const { return left + width; }
  double bottom() const { return top + height; }
  bool empty() const { return width <= 0 || height <= 0; }
};

// Empty when they have nothing in common.
inline Box Overlap(const Box& one, const Box& other) {
  const double left = std::max(one.left, other.left);
  const double top = std::max(one.top, other.top);
  return {left, top, std::min(one.right(), other.right()) - left,
          std::min(one.bottom(), other.bottom()) - top};
}

// Radii of the four corners, from the top left one clockwise.
struct Corners {
  std::array<double, 4> x = {};
  std::array<double, 4> y = {};

  bool round() const { return x != std::array<double, 4>{} && y != std::array<double, 4>{}; }
};

struct PaintedText {
  Box box;
  double baseline = 0;
  HtmlFont* font = nullptr;
  const ShapedWord* word = nullptr;
  std::string text;
  Colour colour;
  int32_t link = -1;  // into DisplayList::links; below 0: none
};

struct PaintedBox {
  Box box;
  Corners corners;
  Colour colour;
};

enum class LineStyle : uint8_t { None, Solid, Dashed, Dotted, Double };

// Left, top, right and bottom.
struct PaintedBorder {
  Box box;
  Corners corners;
  std::array<double, 4> widths = {};
  std::array<Colour, 4> colours = {};
  std::array<LineStyle, 4> styles = {};
};

// A picture, or tiles of one: the first lies at `tile`, and tiles fill the box.
struct PaintedPicture {
  Box box;
  Box tile;
  bool repeatX = false;
  bool repeatY = false;
  const Picture* picture = nullptr;
  int32_t link = -1;
};

struct ClipBegin {
  Box box;
  Corners corners;
};
struct ClipEnd {};

using Painted =
    std::variant<PaintedText, PaintedBox, PaintedBorder, PaintedPicture, ClipBegin, ClipEnd>;

struct DisplayList {
  std::vector<Painted> items;
  std::vector<std::string> links;  // outward and inner addresses
  // Where inner addresses lead to: a place from the top. Those that lead nowhere are not there.
  std::map<std::string, double> places;
  // Boxes that a page should not end within if it need not, as rows of tables.
  std::vector<Box> together;
  std::optional<Colour> canvas;  // drawn first, to the edges of the paper
};

// The box that an item fills; nothing for the ends of clips.
const Box* BoxOf(const Painted& item);

}  // namespace tarn::pages

#endif
