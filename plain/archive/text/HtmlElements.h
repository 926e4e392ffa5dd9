// HtmlElements.h - the elements that the layout of text depends on.
#ifndef TARN_ARCHIVE_HTMLELEMENTS_H
#define TARN_ARCHIVE_HTMLELEMENTS_H

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace tarn::archive {

enum class HtmlElement : uint8_t {
  Other,  // text goes on
  Block,  // begins and ends a line
  Break,
  Cell,
  Definition,  // <dd>
  Heading,
  Image,
  Input,
  Item,  // of a list
  Link,
  NumberedList,
  Option,
  Paragraph,
  Preformatted,
  Quote,      // a block
  QuoteMark,  // <q>
  Row,
  Rule,
  Table,
  TablePart,  // <tbody> and others that hold rows
  Term,       // <dt>
  UnnumberedList
};

struct HtmlElementName {
  std::string_view name;
  HtmlElement element;
};

// Sorted by name.
inline constexpr HtmlElementName kHtmlElements[] = {
    {"a", HtmlElement::Link},           {"address", HtmlElement::Block},
    {"article", HtmlElement::Block},    {"aside", HtmlElement::Block},
    {"blockquote", HtmlElement::Quote}, {"body", HtmlElement::Block},
    {"br", HtmlElement::Break},         {"caption", HtmlElement::Block},
    {"center", HtmlElement::Block},     {"dd", HtmlElement::Definition},
    {"details", HtmlElement::Block},    {"dir", HtmlElement::UnnumberedList},
    {"div", HtmlElement::Block},        {"dl", HtmlElement::Block},
    {"dt", HtmlElement::Term},          {"fieldset", HtmlElement::Block},
    {"figcaption", HtmlElement::Block}, {"figure", HtmlElement::Block},
    {"footer", HtmlElement::Block},     {"form", HtmlElement::Block},
    {"h1", HtmlElement::Heading},       {"h2", HtmlElement::Heading},
    {"h3", HtmlElement::Heading},       {"h4", HtmlElement::Heading},
    {"h5", HtmlElement::Heading},       {"h6", HtmlElement::Heading},
    {"header", HtmlElement::Block},     {"hr", HtmlElement::Rule},
    {"html", HtmlElement::Block},       {"img", HtmlElement::Image},
    {"input", HtmlElement::Input},      {"legend", HtmlElement::Block},
    {"li", HtmlElement::Item},          {"listing", HtmlElement::Preformatted},
    {"main", HtmlElement::Block},       {"menu", HtmlElement::UnnumberedList},
    {"nav", HtmlElement::Block},        {"ol", HtmlElement::NumberedList},
    {"option", HtmlElement::Option},    {"p", HtmlElement::Paragraph},
    {"pre", HtmlElement::Preformatted}, {"q", HtmlElement::QuoteMark},
    {"section", HtmlElement::Block},    {"summary", HtmlElement::Block},
    {"table", HtmlElement::Table},      {"tbody", HtmlElement::TablePart},
    {"td", HtmlElement::Cell},          {"tfoot", HtmlElement::TablePart},
    {"th", HtmlElement::Cell},          {"thead", HtmlElement::TablePart},
    {"tr", HtmlElement::Row},           {"ul", HtmlElement::UnnumberedList},
};

consteval bool HtmlElementsAreSorted() {
  return std::is_sorted(std::begin(kHtmlElements), std::end(kHtmlElements),
                        [](const HtmlElementName& left, const HtmlElementName& right) {
                          return left.name < right.name;
                        });
}
static_assert(HtmlElementsAreSorted());

inline HtmlElement ElementOf(std::string_view name) {
  const auto* const found = std::lower_bound(
      std::begin(kHtmlElements), std::end(kHtmlElements), name,
      [](const HtmlElementName& one, std::string_view wanted) { return one.name < wanted; });
  if (found == std::end(kHtmlElements) || found->name != name) return HtmlElement::Other;
  return found->element;
}

// Those without an end tag.
inline bool IsVoidElement(std::string_view name) {
  static constexpr std::string_view kVoid[] = {
      "area", "base",  "basefont", "bgsound", "br",    "col",    "embed", "frame", "hr",
      "img",  "input", "link",     "meta",    "param", "source", "track", "wbr"};
  return std::find(std::begin(kVoid), std::end(kVoid), name) != std::end(kVoid);
}

}  // namespace tarn::archive

#endif
