// HtmlStyles.h - what the style of a tag tells a reader of its text.
#ifndef TARN_ARCHIVE_HTMLSTYLES_H
#define TARN_ARCHIVE_HTMLSTYLES_H

#include <cstdint>

#include "archive/text/HtmlTokens.h"

namespace tarn::archive {

// What keeps an element from being seen. Elements in it may be seen again, but in one that is not
// there or is cut.
enum class Hiding : uint8_t { None, Everything, Visibility, Size };

// Of a start tag. Text of no size counts where it is told of a piece of text; of a cell or a block
// it keeps spaces out of what is in it.
Hiding HidingOf(const HtmlToken& tag);

// Whether an element that is within one so hidden is seen.
bool IsSeenWithin(Hiding hiding, const HtmlToken& tag);

// Whether a paragraph has no blank line before and after it.
bool HasNoMargins(const HtmlToken& tag);

// Whether spaces and line ends of the element's text stay.
bool KeepsSpaces(const HtmlToken& tag);

}  // namespace tarn::archive

#endif
