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

// What the images of a mail are put into its body with.
struct ImagePlacing {
  InlineImageContext& context;
  SearchBudget& budget;
};

// Is the part a plain text, and the body an HTML text already? Then it will not become the body.
bool IsOutdoneByBody(const EmlPart& part, const EmlMessage& message);

// Uses a part that ParseMimePart has read, and decodes it if the document needs its content. An
// image sets `imageIsLost`: whether the body, which then stays, has no place for it. Other parts
// leave that.
//   StatusOk             the walk goes on
//   StatusOutOfMemory    also without budget, and for a body that would outgrow the context's limit
//   other                what RewriteInlineImage fails with (StatusFailed among it)
// After a failure the body holds what it held, or is empty.
Status UsePart(EmlPart& part, EmlMessage& message, const ImagePlacing& images, bool& imageIsLost);

}  // namespace tarn

#endif
