// PartWalker.h - walks the parts of a mail (RFC 2046, section 5) in file order.
//
// All multipart subtypes are walked alike, one delimiter at a time, and no tree is built:
//
//   find the delimiter      "--" after it, or none: the multipart ends, with StatusOk
//   the part                up to the following delimiter, or the end of the multipart
//   a boundary in it?       then it is a multipart of its own, walked in its turn
//   else                    a leaf, read by ParseMimePart and used by UsePart
//
// A message/rfc822 part is a leaf, whatever its headers hold: its text stays whole. The open
// multiparts are in a block of their own, so that nesting costs no stack.
#ifndef TARN_EML_PARTWALKER_H
#define TARN_EML_PARTWALKER_H

#include "Internal/AttachmentRequest.h"
#include "Internal/EmlMessage.h"
#include "eml/BodyChoice.h"

namespace tarn {

// Multiparts nested deeper than this, the outermost counted, end the walk.
inline constexpr uint64_t kMaxMultipartDepth = 500;

// Walks the file from `cursor` on, and nothing when that is not in the file. An empty delimiter
// means one part that is no multipart. A delimiter that the header wrote with CR LF and that is in
// the stretch with LF alone loses its CR for good. `request` may be null.
//   StatusOk
//   StatusDone           a multipart ended without a closing delimiter, and its last image had no
//                        place in the body; the whole walk ends there
//   StatusOutOfMemory    also for nesting too deep, and for a spent search budget (SearchBudget.h)
//   other                the failure of a part, or what the request's callback gave
// After each of them the body keeps what it has.
Status WalkMimeParts(EmlMessage& message, size_t cursor, std::string_view delimiter,
                     const ImagePlacing& images, const AttachmentRequest* request);

}  // namespace tarn

#endif
