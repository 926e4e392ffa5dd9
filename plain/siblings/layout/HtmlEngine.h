// HtmlEngine.h - pages of HTML, as a browser would print it, but for scripts, which are not run,
// and other files, which are not opened, images of the document's own folder excepted.
//
// A document that is wider than the page is made smaller, down to a third; beyond that it is cut
// off.
#ifndef TARN_SIBLINGS_LAYOUT_HTMLENGINE_H
#define TARN_SIBLINGS_LAYOUT_HTMLENGINE_H

#include <memory>

#include "siblings/layout/Engine.h"

namespace tarn::pages {

std::unique_ptr<Engine> MakeHtmlEngine();

}  // namespace tarn::pages

#endif
