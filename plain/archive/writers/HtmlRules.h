// HtmlRules.h - which elements and attributes of a mail's HTML a reader of the mail needs.
#ifndef TARN_ARCHIVE_HTMLRULES_H
#define TARN_ARCHIVE_HTMLRULES_H

#include <algorithm>
#include <iterator>
#include <string_view>

namespace tarn::archive {

// Sorted. All other tags are dropped, and what is between them is kept. "header" and "main" are not
// among them: those are the page's own, and no end tag of a mail may close them.
inline constexpr std::string_view kKeptElements[] = {
    "a",       "abbr",  "acronym",  "address",    "area",       "article", "aside",   "b",
    "bdi",     "bdo",   "big",      "blockquote", "br",         "caption", "center",  "cite",
    "code",    "col",   "colgroup", "dd",         "del",        "details", "dfn",     "dir",
    "div",     "dl",    "dt",       "em",         "figcaption", "figure",  "font",    "footer",
    "h1",      "h2",    "h3",       "h4",         "h5",         "h6",      "hr",      "i",
    "ins",     "kbd",   "li",       "map",        "mark",       "menu",    "nav",     "ol",
    "p",       "pre",   "q",        "rp",         "rt",         "ruby",    "s",       "samp",
    "section", "small", "span",     "strike",     "strong",     "sub",     "summary", "sup",
    "table",   "tbody", "td",       "tfoot",      "th",         "thead",   "time",    "tr",
    "tt",      "u",     "ul",       "var",        "wbr"};

// Sorted. No attribute that fetches, goes somewhere, or runs something is among them; those of
// links and images have rules of their own.
inline constexpr std::string_view kKeptAttributes[] = {
    "abbr",        "align",       "alt",     "axis",     "bgcolor",  "border",  "bordercolor",
    "cellpadding", "cellspacing", "char",    "charoff",  "class",    "clear",   "color",
    "cols",        "colspan",     "compact", "coords",   "datetime", "dir",     "face",
    "frame",       "headers",     "height",  "hspace",   "id",       "lang",    "name",
    "noshade",     "nowrap",      "open",    "reversed", "rowspan",  "rules",   "scope",
    "shape",       "size",        "span",    "start",    "style",    "summary", "text",
    "title",       "type",        "usemap",  "valign",   "value",    "vspace",  "width"};

template <size_t Count>
constexpr bool AreSorted(const std::string_view (&names)[Count]) {
  return std::is_sorted(std::begin(names), std::end(names));
}
static_assert(AreSorted(kKeptElements));
static_assert(AreSorted(kKeptAttributes));

// Schemes that a link may have; one without is dropped, since it would lead into the folder that
// the file is in.
inline constexpr std::string_view kKeptSchemes[] = {"callto", "ftp",    "ftps",   "geo", "http",
                                                    "https",  "mailto", "news",   "sip", "sips",
                                                    "sms",    "tel",    "webcal", "xmpp"};
static_assert(AreSorted(kKeptSchemes));

template <size_t Count>
bool IsAmong(std::string_view name, const std::string_view (&names)[Count]) {
  return std::binary_search(std::begin(names), std::end(names), name);
}

}  // namespace tarn::archive

#endif
