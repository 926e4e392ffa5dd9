#include "siblings/layout/HtmlFonts.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "siblings/layout/AsciiText.h"

namespace tarn::pages {

namespace {

constexpr int kLargestFont = 2'000;  // pixels

struct FamilyAlias {
  std::string_view name;
  std::string_view shown;
};
// Fonts that mails ask for and that look like these, and what CSS calls kinds of fonts.
constexpr std::array<FamilyAlias, 14> kFamilyAliases = {
    {{"aptos", "Carlito"},
     {"segoe ui", "Liberation Sans"},
     {"helvetica neue", "Liberation Sans"},
     {"roboto", "Liberation Sans"},
     {"open sans", "Liberation Sans"},
     {"lato", "Carlito"},
     {"-apple-system", "Liberation Sans"},
     {"system-ui", "Liberation Sans"},
     {"georgia", "Liberation Serif"},
     {"consolas", "Liberation Mono"},
     {"sans-serif", "Liberation Sans,sans-serif"},
     {"serif", "Liberation Serif,serif"},
     {"monospace", "Liberation Mono,monospace"},
     {"lucida console", "Liberation Mono"}}};

constexpr std::string_view kAroundNames = " \t\r\n\"'";

FontDescription Describe(const FontRequest& request) {
  FontDescription font(pango_font_description_new());
  pango_font_description_set_family(font.get(), FamiliesForPango(request.families).c_str());
  const int size = std::clamp(request.size, 1, kLargestFont);
  pango_font_description_set_absolute_size(font.get(), size * double{PANGO_SCALE});
  pango_font_description_set_weight(font.get(),
                                    static_cast<PangoWeight>(std::clamp(request.weight, 100, 900)));
  pango_font_description_set_style(font.get(),
                                   request.italic ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
  return font;
}

int Pixels(int units) {
  return static_cast<int>(std::lround(static_cast<double>(units) / PANGO_SCALE));
}

using Items = std::unique_ptr<GList, decltype([](GList* list) {
                                g_list_free_full(list, [](gpointer item) {
                                  pango_item_free(static_cast<PangoItem*>(item));
                                });
                              })>;

}  // namespace

std::string FamiliesForPango(std::string_view families) {
  std::string known;
  while (!families.empty()) {
    const size_t comma = std::min(families.find(','), families.size());
    const std::string_view name = Trimmed(families.substr(0, comma), kAroundNames);
    families.remove_prefix(std::min(comma + 1, families.size()));
    if (name.empty()) continue;
    const auto* alias =
        std::find_if(kFamilyAliases.begin(), kFamilyAliases.end(), [&](const FamilyAlias& a) {
          return a.name.size() == name.size() &&
                 g_ascii_strncasecmp(a.name.data(), name.data(), name.size()) == 0;
        });
    if (!known.empty()) known += ',';
    known += alias == kFamilyAliases.end() ? name : alias->shown;
  }
  return known.empty() ? "Liberation Sans" : known;
}

HtmlFont::HtmlFont(PangoContext* context, const FontRequest& request)
    : context_(context), request_(request), attributes_(pango_attr_list_new()) {
  const FontDescription font = Describe(request);
  pango_attr_list_insert(attributes_.get(), pango_attr_font_desc_new(font.get()));
  const FontMetrics metrics(
      pango_context_get_metrics(context, font.get(), pango_language_from_string("en")));
  ascent_ = Pixels(pango_font_metrics_get_ascent(metrics.get()));
  descent_ = Pixels(pango_font_metrics_get_descent(metrics.get()));
  height_ = std::max(Pixels(pango_font_metrics_get_height(metrics.get())), ascent_ + descent_);
  xHeight_ = std::max(1, request.size / 2);
}

const ShapedWord& HtmlFont::shape(const std::string& word) {
  const auto known = words_.find(word);
  if (known != words_.end()) return known->second;
  return words_.emplace(word, shapeNew(word)).first->second;
}

ShapedWord HtmlFont::shapeNew(const std::string& word) const {
  ShapedWord shaped;
  const int length = static_cast<int>(word.size());
  if (length == 0) return shaped;
  const Items logical(pango_itemize(context_, word.c_str(), 0, length, attributes_.get(), nullptr));
  using Order = std::unique_ptr<GList, ReleasedBy<g_list_free>>;
  const Order visual(pango_reorder_items(logical.get()));
  int width = 0;
  for (GList* link = visual.get(); link != nullptr; link = link->next) {
    const auto* item = static_cast<PangoItem*>(link->data);
    GlyphItem run(g_slice_new0(PangoGlyphItem));
    run->item = pango_item_copy(const_cast<PangoItem*>(item));
    run->glyphs = pango_glyph_string_new();
    pango_shape_full(word.c_str() + item->offset, item->length, word.c_str(), length,
                     &item->analysis, run->glyphs);
    width += pango_glyph_string_get_width(run->glyphs);
    shaped.runs.push_back(std::move(run));
  }
  shaped.width = static_cast<double>(width) / PANGO_SCALE;
  for (const char* at = word.c_str(); *at != '\0'; at = g_utf8_next_char(at)) {
    switch (g_unichar_get_script(g_utf8_get_char(at))) {
      case G_UNICODE_SCRIPT_HEBREW:
      case G_UNICODE_SCRIPT_ARABIC:
      case G_UNICODE_SCRIPT_SYRIAC:
      case G_UNICODE_SCRIPT_THAANA:
      case G_UNICODE_SCRIPT_NKO:
        shaped.rightToLeft = true;
        break;
      case G_UNICODE_SCRIPT_COMMON:
      case G_UNICODE_SCRIPT_INHERITED:
        break;
      default:
        shaped.leftToRight = true;
    }
  }
  return shaped;
}

HtmlFont* HtmlFonts::add(const FontRequest& request) {
  fonts_.push_back(std::make_unique<HtmlFont>(context_, request));
  return fonts_.back().get();
}

}  // namespace tarn::pages
