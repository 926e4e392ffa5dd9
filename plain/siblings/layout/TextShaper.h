// TextShaper.h - lays out one paragraph of plain text at a time, on a grid of lines that are all of
// the same height.
#ifndef TARN_SIBLINGS_LAYOUT_TEXTSHAPER_H
#define TARN_SIBLINGS_LAYOUT_TEXTSHAPER_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "siblings/layout/LibraryHandles.h"

namespace tarn::pages {

// What a paragraph takes.
struct TextMeasure {
  int32_t lines = 0;
  size_t bytes = 0;  // the text of these lines
};

class TextShaper {
 public:
  TextShaper();

  static constexpr double kFontSize = 10;    // points
  static constexpr double kLineHeight = 13;  // points
  static constexpr double kBaseline = 9.6;   // from the top of a line

  // From now on paragraphs are that wide, in points.
  void setWidth(double width);

  // The lines of a paragraph's beginning: all of it, or, of one that is too long to be laid out in
  // one go, as many whole lines as that takes. The text is UTF-8 without line ends.
  TextMeasure measure(std::string_view paragraph);

  // Lays out what was measured, for lines to be drawn.
  PangoLayout* layOut(std::string_view measured);

  // How often Pango has been asked.
  uint64_t layoutCount() const { return layoutCount_; }

 private:
  bool fitsOneLine(std::string_view paragraph) const;

  GObjectHandle<PangoContext> context_;
  GObjectHandle<PangoLayout> layout_;
  double columnWidth_ = 0;  // 0: the font's letters differ in width
  int64_t columns_ = 0;
  uint64_t layoutCount_ = 0;
};

}  // namespace tarn::pages

#endif
