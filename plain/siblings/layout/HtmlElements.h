// HtmlElements.h - the elements that are more here than the HTML library makes of them: links,
// cells of tables, old attributes, and images that are not there.
#ifndef TARN_SIBLINGS_LAYOUT_HTMLELEMENTS_H
#define TARN_SIBLINGS_LAYOUT_HTMLELEMENTS_H

#include <litehtml.h>

#include <memory>
#include <string>

namespace tarn::pages {

class HtmlContainer;

// Null for an element that the library makes.
litehtml::element::ptr MakeHtmlElement(const std::string& tag,
                                       const litehtml::string_map& attributes,
                                       const std::shared_ptr<litehtml::document>& document,
                                       HtmlContainer& container);

}  // namespace tarn::pages

#endif
