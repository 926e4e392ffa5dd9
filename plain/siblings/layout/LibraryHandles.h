// LibraryHandles.h - owners for what Cairo, Pango and GLib give out.
#ifndef TARN_SIBLINGS_LAYOUT_LIBRARYHANDLES_H
#define TARN_SIBLINGS_LAYOUT_LIBRARYHANDLES_H

#include <cairo.h>
#include <pango/pangocairo.h>

#include <memory>

namespace tarn::pages {

// Calls the library's own function at the end.
template <auto Release>
struct ReleasedBy {
  template <typename T>
  void operator()(T* object) const {
    Release(object);
  }
};

using CairoContext = std::unique_ptr<cairo_t, ReleasedBy<cairo_destroy>>;
using CairoSurface = std::unique_ptr<cairo_surface_t, ReleasedBy<cairo_surface_destroy>>;
using CairoPattern = std::unique_ptr<cairo_pattern_t, ReleasedBy<cairo_pattern_destroy>>;
using CairoFontOptions =
    std::unique_ptr<cairo_font_options_t, ReleasedBy<cairo_font_options_destroy>>;

template <typename T>
using GObjectHandle = std::unique_ptr<T, ReleasedBy<g_object_unref>>;

using AttributeList = std::unique_ptr<PangoAttrList, ReleasedBy<pango_attr_list_unref>>;
using FontDescription =
    std::unique_ptr<PangoFontDescription, ReleasedBy<pango_font_description_free>>;
using FontMetrics = std::unique_ptr<PangoFontMetrics, ReleasedBy<pango_font_metrics_unref>>;
using GlyphString = std::unique_ptr<PangoGlyphString, ReleasedBy<pango_glyph_string_free>>;
using LayoutIterator = std::unique_ptr<PangoLayoutIter, ReleasedBy<pango_layout_iter_free>>;
using TabArray = std::unique_ptr<PangoTabArray, ReleasedBy<pango_tab_array_free>>;

}  // namespace tarn::pages

#endif
