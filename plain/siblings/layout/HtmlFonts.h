// HtmlFonts.h - fonts as CSS names them, and words shaped with them.
//
// Lengths are pixels of CSS, 1/96 inch. A word is shaped once in a document, however often it
// occurs.
#ifndef TARN_SIBLINGS_LAYOUT_HTMLFONTS_H
#define TARN_SIBLINGS_LAYOUT_HTMLFONTS_H

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "siblings/layout/LibraryHandles.h"

namespace tarn::pages {

struct FontRequest {
  std::string families;  // as in CSS: names parted by commas, in quotes or not
  int size = 16;
  int weight = 400;
  bool italic = false;
  bool underline = false;
  bool strikeThrough = false;
  bool overline = false;
};

using GlyphItem = std::unique_ptr<PangoGlyphItem, ReleasedBy<pango_glyph_item_free>>;

struct ShapedWord {
  // Glyphs, each item of one font, in the order in which they are seen, from left to right. Their
  // offsets are into the word's text.
  std::vector<GlyphItem> runs;
  double width = 0;
  // Is there a letter of a script from right to left in it, or one from left to right?
  bool rightToLeft = false;
  bool leftToRight = false;
};

class HtmlFont {
 public:
  HtmlFont(PangoContext* context, const FontRequest& request);

  const FontRequest& request() const { return request_; }
  int ascent() const { return ascent_; }
  int descent() const { return descent_; }
  int height() const { return height_; }
  int xHeight() const { return xHeight_; }

  const ShapedWord& shape(const std::string& word);

 private:
  ShapedWord shapeNew(const std::string& word) const;

  PangoContext* context_;
  FontRequest request_;
  AttributeList attributes_;
  int ascent_ = 0;
  int descent_ = 0;
  int height_ = 0;
  int xHeight_ = 0;
  std::unordered_map<std::string, ShapedWord> words_;
};

// The fonts of a document.
class HtmlFonts {
 public:
  explicit HtmlFonts(PangoContext* context) : context_(context) {}

  HtmlFont* add(const FontRequest& request);

 private:
  PangoContext* context_;
  std::vector<std::unique_ptr<HtmlFont>> fonts_;
};

// The family names for Pango: quotes taken away, names that have no font of their metrics replaced
// by one that has, and the generic ones by fonts that are always there.
std::string FamiliesForPango(std::string_view families);

}  // namespace tarn::pages

#endif
