// PstInlineImages.h - puts the attached images of a store's message into its HTML body.
#ifndef TARN_FILEFORMATS_PST_PSTINLINEIMAGES_H
#define TARN_FILEFORMATS_PST_PSTINLINEIMAGES_H

#include "FileFormats/Pst/StoreWalk.h"

namespace pststore {
class message;
}

namespace tarn {

// For each attachment that the body refers to, by "cid:" and its long name or by its name alone.
// Content ids are not looked at. What the store throws ends the pass, and the body keeps the images
// placed so far; attachments beyond what `reading` has left are not seen.
//   StatusOk
//   StatusOutOfMemory  also for an image of no bytes, and when the images, or the searches and what
//                      they rewrite, take more than a file of this size is worth (StoreLimits.h,
//                      SearchBudget.h)
//   others             of RewriteInlineImage
Status InlinePstImages(const pststore::message& source, uint32_t attachmentCount, SizedBytes& body,
                       StoreReading& reading);

}  // namespace tarn

#endif
