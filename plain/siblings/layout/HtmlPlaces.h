// HtmlPlaces.h - where the places are that links within a document of HTML lead to.
#ifndef TARN_SIBLINGS_LAYOUT_HTMLPLACES_H
#define TARN_SIBLINGS_LAYOUT_HTMLPLACES_H

#include <litehtml.h>

#include <map>
#include <string>
#include <vector>

namespace tarn::pages {

// A link to a place of its own document: "#place".
bool IsInnerAddress(const std::string& address);

// The tops, in pixels of the sheet, of the elements that the inner ones of the links name: by id,
// or by the name of an <a>; the first of several. The document is laid out.
std::map<std::string, double> FindPlaces(litehtml::document& document,
                                         const std::vector<std::string>& links);

}  // namespace tarn::pages

#endif
