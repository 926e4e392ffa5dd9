// FontContext.h - the fonts of this process.
//
// A unit of Pango is a thousandth of what pages are measured in, whatever it is drawn on: nothing
// is rounded to pixels, and a page is the same at every resolution.
#ifndef TARN_SIBLINGS_LAYOUT_FONTCONTEXT_H
#define TARN_SIBLINGS_LAYOUT_FONTCONTEXT_H

#include "siblings/layout/LibraryHandles.h"

namespace tarn::pages {

GObjectHandle<PangoContext> MakeFontContext();

}  // namespace tarn::pages

#endif
