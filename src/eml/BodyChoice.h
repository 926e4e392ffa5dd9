// BodyChoice.h - what a leaf is to the document: its body, an image in the body, or nothing.
//
// The last HTML part wins over all parts; a plain part replaces an earlier plain part, or a part
// that was the body only because there was none. "No body" means length 0: an empty text part is a
// body, its terminator counted.
#ifndef TARN_EML_BODYCHOICE_H
#define TARN_EML_BODYCHOICE_H

#include "Common/InlineImages.h"
#include "Common/SearchBudget.h"
#include "Internal/EmlMessage.h"

namespace tarn {

// Is the part a plain text, and the body an HTML text already? Then it will not become the body.
bool IsOutdoneByBody(const EmlPart& part, const EmlMessage& message);

// Uses a part that ParseMimePart has read, and decodes it if the document needs its content. An
// image sets `walkResult`: 2 when the body has no place for it (then the body stays), else the
// result of putting it there; other parts leave it.
//
// 1 goes on with the walk. Failures end it: -1 without memory or budget and for a body that would
// grow beyond the context's limit, and what RewriteInlineImage fails with (0 among them). The body
// then holds what it held, or is empty.
int32_t UsePart(EmlPart& part, EmlMessage& message, InlineImageContext& context,
                SearchBudget& budget, int32_t& walkResult);

}  // namespace tarn

#endif
