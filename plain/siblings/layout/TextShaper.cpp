#include "siblings/layout/TextShaper.h"

#include <algorithm>
#include <new>

#include "siblings/layout/FontContext.h"
#include "siblings/layout/Utf8.h"

namespace tarn::pages {

namespace {

constexpr const char* kFamilies = "Liberation Mono,DejaVu Sans Mono,monospace";
constexpr int64_t kTabColumns = 8;

// Pango's time for a paragraph grows faster than its length.
constexpr size_t kMostBytes = 2'048;

int WidthOf(PangoLayout* layout, std::string_view text) {
  pango_layout_set_text(layout, text.data(), static_cast<int>(text.size()));
  int width = 0;
  pango_layout_get_size(layout, &width, nullptr);
  return width;
}

// The end of the last whole character.
size_t CutAtCharacter(std::string_view text, size_t length) {
  while (length > 0 && (static_cast<uint8_t>(text[length]) & 0xC0) == 0x80) --length;
  return length;
}

}  // namespace

TextShaper::TextShaper() : context_(MakeFontContext()), layout_(pango_layout_new(context_.get())) {
  FontDescription font(pango_font_description_new());
  pango_font_description_set_family_static(font.get(), kFamilies);
  pango_font_description_set_absolute_size(font.get(), kFontSize * PANGO_SCALE);
  pango_layout_set_font_description(layout_.get(), font.get());
  pango_layout_set_wrap(layout_.get(), PANGO_WRAP_WORD_CHAR);
  // A word that is cut, an address say, gets no hyphen.
  AttributeList attributes(pango_attr_list_new());
  pango_attr_list_insert(attributes.get(), pango_attr_insert_hyphens_new(FALSE));
  pango_layout_set_attributes(layout_.get(), attributes.get());
  const int wide = WidthOf(layout_.get(), "MMMMMMMMMM");
  if (wide == WidthOf(layout_.get(), "iiiii.....") &&
      wide == WidthOf(layout_.get(), "0 W ~ f fi")) {
    columnWidth_ = wide / 10.0 / PANGO_SCALE;
  }
  const double tab = static_cast<double>(kTabColumns) * wide / 10.0;
  TabArray tabs(pango_tab_array_new(1, FALSE));
  pango_tab_array_set_tab(tabs.get(), 0, PANGO_TAB_LEFT, static_cast<int>(tab));
  pango_layout_set_tabs(layout_.get(), tabs.get());
}

void TextShaper::setWidth(double width) {
  pango_layout_set_width(layout_.get(), static_cast<int>(width * PANGO_SCALE));
  columns_ = columnWidth_ > 0 ? static_cast<int64_t>(width / columnWidth_) : 0;
}

bool TextShaper::fitsOneLine(std::string_view paragraph) const {
  if (static_cast<int64_t>(paragraph.size()) > columns_) return false;
  int64_t column = 0;
  for (const char c : paragraph) {
    if (c == '\t') {
      column = (column / kTabColumns + 1) * kTabColumns;
    } else if (c >= 0x20 && c < 0x7F) {
      ++column;
    } else {
      return false;
    }
  }
  return column <= columns_;
}

TextMeasure TextShaper::measure(std::string_view paragraph) {
  if (paragraph.empty() || fitsOneLine(paragraph)) return {1, paragraph.size()};
  const bool all = paragraph.size() <= kMostBytes;
  if (!all) paragraph = paragraph.substr(0, CutAtCharacter(paragraph, kMostBytes));
  PangoLayout* layout = layOut(paragraph);
  const int lines = pango_layout_get_line_count(layout);
  if (all || lines < 2) return {lines, paragraph.size()};
  const PangoLayoutLine* last = pango_layout_get_line_readonly(layout, lines - 1);
  return {lines - 1, static_cast<size_t>(last->start_index)};
}

PangoLayout* TextShaper::layOut(std::string_view measured) {
  ++layoutCount_;
  pango_layout_set_text(layout_.get(), measured.data(), static_cast<int>(measured.size()));
  return layout_.get();
}

}  // namespace tarn::pages
