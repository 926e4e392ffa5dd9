// HtmlUnseen.h - text that a document hides from its readers by its size or by its opacity.
#ifndef TARN_SIBLINGS_LAYOUT_HTMLUNSEEN_H
#define TARN_SIBLINGS_LAYOUT_HTMLUNSEEN_H

#include <litehtml.h>

namespace tarn::pages {

// The HTML library takes text without a size for text of the usual one, a largest height of 0 for
// none, and knows no opacity. Text of no size goes from the document; what cannot be seen through
// leaves its room blank. For a document that has its styles and is not laid out yet.
void HideUnseen(litehtml::document& document);

}  // namespace tarn::pages

#endif
