// HtmlStyles.h - what the style of a tag tells a reader of its text.
#ifndef TARN_ARCHIVE_HTMLSTYLES_H
#define TARN_ARCHIVE_HTMLSTYLES_H

#include "archive/text/HtmlTokens.h"

namespace tarn::archive {

// Of a start tag: whether nothing of the element is seen. Text of no size counts where it is told
// of a piece of text; of a cell or a block it keeps spaces out of what is in it.
bool IsHiddenByStyle(const HtmlToken& tag);

// Whether a paragraph has no blank line before and after it.
bool HasNoMargins(const HtmlToken& tag);

// Whether spaces and line ends of the element's text stay.
bool KeepsSpaces(const HtmlToken& tag);

}  // namespace tarn::archive

#endif
