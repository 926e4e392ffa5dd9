#include "siblings/layout/DisplayPainter.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tarn::pages {

namespace {

void SetColour(cairo_t* context, const Colour& colour) {
  cairo_set_source_rgba(context, colour.red / 255.0, colour.green / 255.0, colour.blue / 255.0,
                        colour.alpha / 255.0);
}

void AddCorner(cairo_t* context, double x, double y, double radiusX, double radiusY, double from) {
  if (radiusX <= 0 || radiusY <= 0) {
    cairo_line_to(context, x, y);
    return;
  }
  cairo_save(context);
  cairo_translate(context, x, y);
  cairo_scale(context, radiusX, radiusY);
  cairo_arc(context, 0, 0, 1, from, from + std::numbers::pi / 2);
  cairo_restore(context);
}

void AddBox(cairo_t* context, const Box& box, const Corners& corners) {
  if (!corners.round()) {
    cairo_rectangle(context, box.left, box.top, box.width, box.height);
    return;
  }
  Corners c = corners;
  for (size_t i = 0; i < 4; ++i) {
    c.x[i] = std::clamp(c.x[i], 0.0, box.width / 2);
    c.y[i] = std::clamp(c.y[i], 0.0, box.height / 2);
    if (c.x[i] <= 0 || c.y[i] <= 0) c.x[i] = c.y[i] = 0;
  }
  constexpr double kRight = std::numbers::pi / 2;
  cairo_new_sub_path(context);
  AddCorner(context, box.left + c.x[0], box.top + c.y[0], c.x[0], c.y[0], 2 * kRight);
  AddCorner(context, box.right() - c.x[1], box.top + c.y[1], c.x[1], c.y[1], 3 * kRight);
  AddCorner(context, box.right() - c.x[2], box.bottom() - c.y[2], c.x[2], c.y[2], 0);
  AddCorner(context, box.left + c.x[3], box.bottom() - c.y[3], c.x[3], c.y[3], kRight);
  cairo_close_path(context);
}

class BandPainter {
 public:
  BandPainter(cairo_t* context, const DisplayList& list, const PageBand& band,
              const PlaceLink& placeLink)
      : context_(context), list_(list), band_(band), placeLink_(placeLink) {}

  void paint() {
    for (const uint32_t index : band_.items) {
      std::visit([this](const auto& item) { (*this)(item); }, list_.items[index]);
    }
    for (; !clips_.empty(); clips_.pop_back()) cairo_restore(context_);
    // A link is a mark in the PDF, which a clip would be about as well.
    for (const SeenLink& link : links_) {
      placeLink_(link.number, {link.box.left, link.box.top, link.box.width, link.box.height});
    }
  }

  void operator()(const PaintedText& text);
  void operator()(const PaintedBox& box);
  void operator()(const PaintedBorder& border);
  void operator()(const PaintedPicture& picture);
  void operator()(const ClipBegin& clip);
  void operator()(const ClipEnd& /*end*/) {
    cairo_restore(context_);
    clips_.pop_back();
  }

 private:
  // Keeps what follows within the band, if the box reaches out of it.
  class InBand {
   public:
    InBand(const BandPainter& painter, const Box& box) : context_(painter.context_) {
      cairo_save(context_);
      const PageBand& band = painter.band_;
      if (box.top >= band.top && box.bottom() <= band.bottom) return;
      cairo_rectangle(context_, box.left - 1, band.top, box.width + 2, band.bottom - band.top);
      cairo_clip(context_);
    }
    InBand(const InBand&) = delete;
    InBand& operator=(const InBand&) = delete;
    ~InBand() { cairo_restore(context_); }

   private:
    cairo_t* context_;
  };

  void paintLines(const PaintedText& text);
  void paintRing(const PaintedBorder& border);
  void paintSide(const PaintedBorder& border, size_t side);
  void noteLink(int32_t link, const Box& box);
  bool isClippedAway() const { return !clips_.empty() && clips_.back().empty(); }

  struct SeenLink {
    size_t number = 0;
    Box box;
  };

  cairo_t* context_;
  const DisplayList& list_;
  const PageBand& band_;
  const PlaceLink& placeLink_;
  std::vector<Box> clips_;  // that are open; each within the one before it
  std::vector<SeenLink> links_;
};

void BandPainter::operator()(const PaintedText& text) {
  if (isClippedAway()) return;
  SetColour(context_, text.colour);
  double x = text.box.left;
  for (const GlyphItem& run : text.word->runs) {
    cairo_move_to(context_, x, text.baseline);
    pango_cairo_show_glyph_item(context_, text.text.c_str(), run.get());
    x += static_cast<double>(pango_glyph_string_get_width(run->glyphs)) / PANGO_SCALE;
  }
  paintLines(text);
  noteLink(text.link, text.box);
}

void BandPainter::paintLines(const PaintedText& text) {
  const FontRequest& font = text.font->request();
  const double thickness = std::max(1.0, font.size / 16.0);
  const auto line = [&](double y) {
    cairo_rectangle(context_, text.box.left, y, text.box.width, thickness);
    cairo_fill(context_);
  };
  if (font.underline) line(text.baseline + std::max(1.0, font.size / 12.0));
  if (font.strikeThrough) line(text.baseline - font.size * 0.28);
  if (font.overline) line(text.baseline - text.font->ascent());
}

void BandPainter::operator()(const PaintedBox& box) {
  if (isClippedAway()) return;
  const InBand inBand(*this, box.box);
  SetColour(context_, box.colour);
  AddBox(context_, box.box, box.corners);
  cairo_fill(context_);
}

void BandPainter::operator()(const PaintedBorder& border) {
  if (isClippedAway()) return;
  const InBand inBand(*this, border.box);
  const auto same = [](const auto& four) {
    return std::all_of(four.begin(), four.end(), [&](const auto& one) { return one == four[0]; });
  };
  if (same(border.colours) && same(border.styles) && border.styles[0] == LineStyle::Solid) {
    paintRing(border);
    return;
  }
  for (size_t side = 0; side < 4; ++side) paintSide(border, side);
}

void BandPainter::paintRing(const PaintedBorder& border) {
  const auto& widths = border.widths;
  const Box inner = {border.box.left + widths[0], border.box.top + widths[1],
                     std::max(0.0, border.box.width - widths[0] - widths[2]),
                     std::max(0.0, border.box.height - widths[1] - widths[3])};
  Corners innerCorners = border.corners;
  for (size_t i = 0; i < 4; ++i) {
    innerCorners.x[i] -= i == 0 || i == 3 ? widths[0] : widths[2];
    innerCorners.y[i] -= i < 2 ? widths[1] : widths[3];
  }
  SetColour(context_, border.colours[0]);
  cairo_set_fill_rule(context_, CAIRO_FILL_RULE_EVEN_ODD);
  AddBox(context_, border.box, border.corners);
  AddBox(context_, inner, innerCorners);
  cairo_fill(context_);
}

// A side meets its neighbours on the diagonals of the corners.
void BandPainter::paintSide(const PaintedBorder& border, size_t side) {
  const double width = border.widths[side];
  const LineStyle style = border.styles[side];
  if (width <= 0 || style == LineStyle::None) return;
  const Box& box = border.box;
  const auto& w = border.widths;
  const std::array<std::array<double, 2>, 4> outer = {{{box.left, box.top},
                                                       {box.right(), box.top},
                                                       {box.right(), box.bottom()},
                                                       {box.left, box.bottom()}}};
  const std::array<std::array<double, 2>, 4> inner = {{{box.left + w[0], box.top + w[1]},
                                                       {box.right() - w[2], box.top + w[1]},
                                                       {box.right() - w[2], box.bottom() - w[3]},
                                                       {box.left + w[0], box.bottom() - w[3]}}};
  const size_t from = (side + 3) % 4;  // the corner before the side: left begins at the bottom left
  const size_t to = side;
  SetColour(context_, border.colours[side]);
  const auto middle = [&](size_t corner, size_t part) {
    return (outer[corner][part] + inner[corner][part]) / 2;
  };
  if (style == LineStyle::Dashed || style == LineStyle::Dotted) {
    const std::array<double, 2> dashes = {style == LineStyle::Dashed ? 3 * width : width, width};
    cairo_set_line_width(context_, width);
    cairo_set_dash(context_, dashes.data(), 2, 0);
    cairo_move_to(context_, middle(from, 0), middle(from, 1));
    cairo_line_to(context_, middle(to, 0), middle(to, 1));
    cairo_stroke(context_);
    return;
  }
  cairo_move_to(context_, outer[from][0], outer[from][1]);
  cairo_line_to(context_, outer[to][0], outer[to][1]);
  cairo_line_to(context_, inner[to][0], inner[to][1]);
  cairo_line_to(context_, inner[from][0], inner[from][1]);
  cairo_close_path(context_);
  cairo_fill(context_);
  if (style != LineStyle::Double || width < 3) return;
  cairo_set_source_rgb(context_, 1, 1, 1);
  cairo_set_line_width(context_, width / 3);
  cairo_move_to(context_, middle(from, 0), middle(from, 1));
  cairo_line_to(context_, middle(to, 0), middle(to, 1));
  cairo_stroke(context_);
}

void BandPainter::operator()(const PaintedPicture& picture) {
  if (isClippedAway()) return;
  cairo_surface_t* surface = picture.picture->surface.get();
  const double width = cairo_image_surface_get_width(surface);
  const double height = cairo_image_surface_get_height(surface);
  if (picture.tile.width <= 0 || picture.tile.height <= 0) return;
  const InBand inBand(*this, picture.box);
  Box shown = picture.box;
  if (!picture.repeatX) {
    shown.left = std::max(shown.left, picture.tile.left);
    shown.width = std::min(picture.box.right(), picture.tile.right()) - shown.left;
  }
  if (!picture.repeatY) {
    shown.top = std::max(shown.top, picture.tile.top);
    shown.height = std::min(picture.box.bottom(), picture.tile.bottom()) - shown.top;
  }
  if (shown.empty()) return;
  const CairoPattern pattern(cairo_pattern_create_for_surface(surface));
  cairo_matrix_t matrix;
  cairo_matrix_init_scale(&matrix, width / picture.tile.width, height / picture.tile.height);
  cairo_matrix_translate(&matrix, -picture.tile.left, -picture.tile.top);
  cairo_pattern_set_matrix(pattern.get(), &matrix);
  const bool repeats = picture.repeatX || picture.repeatY;
  cairo_pattern_set_extend(pattern.get(), repeats ? CAIRO_EXTEND_REPEAT : CAIRO_EXTEND_PAD);
  cairo_pattern_set_filter(pattern.get(), CAIRO_FILTER_GOOD);
  cairo_set_source(context_, pattern.get());
  cairo_rectangle(context_, shown.left, shown.top, shown.width, shown.height);
  cairo_fill(context_);
  noteLink(picture.link,
           Overlap(shown, {shown.left, band_.top, shown.width, band_.bottom - band_.top}));
}

void BandPainter::operator()(const ClipBegin& clip) {
  cairo_save(context_);
  clips_.push_back(clips_.empty() ? clip.box : Overlap(clips_.back(), clip.box));
  AddBox(context_, clip.box, clip.corners);
  cairo_clip(context_);
}

// Words that follow each other on a line are one place to click. What a clip leaves out is none.
void BandPainter::noteLink(int32_t link, const Box& box) {
  if (!placeLink_ || link < 0) return;
  const auto number = static_cast<size_t>(link);
  const Box seen = clips_.empty() ? box : Overlap(clips_.back(), box);
  if (seen.empty()) return;
  if (!links_.empty()) {
    SeenLink& last = links_.back();
    if (last.number == number && std::abs(seen.top - last.box.top) < 1 &&
        std::abs(seen.left - last.box.right()) < 3) {
      last.box.width = seen.right() - last.box.left;
      return;
    }
  }
  links_.push_back({number, seen});
}

}  // namespace

const Box* BoxOf(const Painted& item) {
  return std::visit(
      [](const auto& painted) -> const Box* {
        if constexpr (requires { painted.box; }) {
          return &painted.box;
        } else {
          return nullptr;
        }
      },
      item);
}

namespace {

// None when the first comes after the last.
struct PageSpan {
  size_t first = 0;
  size_t last = 0;
};

}  // namespace

std::vector<PageBand> MakeBands(const DisplayList& list, const std::vector<double>& tops,
                                double bottom) {
  std::vector<PageBand> bands(tops.size());
  for (size_t i = 0; i < tops.size(); ++i) {
    bands[i].top = tops[i];
    bands[i].bottom = i + 1 < tops.size() ? tops[i + 1] : bottom;
  }
  // The last page that begins above a place.
  const auto pageOf = [&](double y) {
    const auto next = std::upper_bound(tops.begin(), tops.end(), y);
    return static_cast<size_t>(std::max<std::ptrdiff_t>(next - tops.begin() - 1, 0));
  };
  // What is within a clip is on the pages of the clip alone.
  const PageSpan all = {0, tops.size() - 1};
  std::vector<PageSpan> clips;
  for (size_t i = 0; i < list.items.size(); ++i) {
    PageSpan span;
    if (const Box* box = BoxOf(list.items[i])) {
      span = {pageOf(box->top), pageOf(std::max(box->bottom() - 0.5, box->top))};
      if (std::holds_alternative<PaintedText>(list.items[i])) {
        span.last = pageOf(box->bottom() - 1.5);
        span.first = span.last;
      }
      const PageSpan& around = clips.empty() ? all : clips.back();
      span = {std::max(span.first, around.first), std::min(span.last, around.last)};
      if (std::holds_alternative<ClipBegin>(list.items[i])) clips.push_back(span);
    } else if (!clips.empty()) {
      span = clips.back();
      clips.pop_back();
    } else {
      continue;
    }
    for (size_t page = span.first; page <= span.last; ++page) {
      bands[page].items.push_back(static_cast<uint32_t>(i));
    }
  }
  return bands;
}

void PaintBand(cairo_t* context, const DisplayList& list, const PageBand& band,
               const PlaceLink& placeLink) {
  BandPainter(context, list, band, placeLink).paint();
}

}  // namespace tarn::pages
