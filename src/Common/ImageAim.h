// ImageAim.h - finds the reference that a body makes to an attached image.
#ifndef TARN_COMMON_IMAGEAIM_H
#define TARN_COMMON_IMAGEAIM_H

#include "Common/InlineImages.h"
#include "Common/SearchBudget.h"

namespace tarn {

// Aims the context at the image's first reference in the body: at "cid:" and the content id, or
// else, when that occurs nowhere, at the name. What was found is the context's needle and where it
// is its searchOffset, else both stay. Both texts are UTF-8 and terminated, outlive the
// context's use of them, and are null when the image has none.
//
// Every byte that a search passes over is charged to the budget. A pass has the same one.
//   StatusOk           `found` says whether there is a reference
//   StatusOutOfMemory  without memory for the text of the content id, or once the budget is spent
Status AimAtReference(InlineImageContext& context, SearchBudget& budget, const char* contentId,
                      const char* name, bool& found);

}  // namespace tarn

#endif
