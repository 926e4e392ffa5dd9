#include "siblings/layout/FontContext.h"

#include <cairo.h>

namespace tarn::pages {

GObjectHandle<PangoContext> MakeFontContext() {
  GObjectHandle<PangoContext> context(
      pango_font_map_create_context(pango_cairo_font_map_get_default()));
  CairoFontOptions options(cairo_font_options_create());
  cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
  cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
  cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
  pango_cairo_context_set_font_options(context.get(), options.get());
  // Sizes are absolute; this is for what Pango works out by itself.
  pango_cairo_context_set_resolution(context.get(), 72);
  pango_context_set_round_glyph_positions(context.get(), FALSE);
  // Not the language of whoever runs the program, which would choose among the shapes of Han.
  pango_context_set_language(context.get(), pango_language_from_string("en"));
  return context;
}

}  // namespace tarn::pages
