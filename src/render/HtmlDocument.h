// HtmlDocument.h - the header block as an HTML table after the opening of the body element.
#ifndef TARN_RENDER_HTML_DOCUMENT_H
#define TARN_RENDER_HTML_DOCUMENT_H

#include <string_view>

#include "Internal/MailMessage.h"

namespace tarn {

inline constexpr std::string_view kHtmlTableOpen =
    "<table style = 'border-collapse: collapse ; table-layout: fixed; width: 100%'>\r\n";
inline constexpr std::string_view kHtmlRowTail = "</span></td></tr>\r\n";
inline constexpr std::string_view kHtmlBlockTail =
    "</table>\r\n<p class=MsoNormal><o:p>&nbsp;</o:p></p>\r\n";

// Puts the block into message.body, which afterwards ends with a NUL that its length counts. A
// message without any row keeps its body untouched. Values are not escaped: a field that holds
// markup brings it into the table. With bytes beyond ASCII in the block, a body that declares a
// known charset is converted to UTF-8 first.
//   StatusOk
//   StatusNotSupported  "<body" without a ">"; a conversion stays
//   others              of a failed conversion; of a buffer that cannot grow, and then the body is
//                       as it was
Status RenderMailHtml(MailMessage& message);

// Where the block goes: after the ">" of the first "<body" (lower case only), or the start of a
// text without one; std::string_view::npos for "<body" without a ">".
size_t FindSplicePoint(std::string_view html);

// What a text that is no whole document is put between.
inline constexpr std::string_view kHtmlOpen = "<html>";
inline constexpr std::string_view kHtmlClose = "</html>";

// Whether the very first tag is <html>, in any case. A doctype or a comment is a tag too.
bool OpensWithHtmlElement(std::string_view html);

}  // namespace tarn

#endif
