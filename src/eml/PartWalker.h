// PartWalker.h - walks the parts of a mail (RFC 2046, section 5) in file order.
//
// All multipart subtypes are walked alike, one delimiter at a time, and no tree is built:
//
//   find the delimiter      "--" behind it, or none: the multipart ends, with 1
//   the part                up to the following delimiter, or the end of the multipart
//   a boundary in it?       then it is a multipart of its own, walked in its turn
//   else                    a leaf, read by ParseMimePart and used by UsePart
//
// A message/rfc822 part is a leaf, whatever its headers hold: its text stays whole. The open
// multiparts stand in a block of their own, so that nesting costs no stack.
#ifndef TARN_EML_PARTWALKER_H
#define TARN_EML_PARTWALKER_H

#include "Common/InlineImages.h"
#include "Common/SearchBudget.h"
#include "Internal/AttachmentRequest.h"
#include "Internal/EmlMessage.h"

namespace tarn {

// Multiparts nested deeper than this, the outermost counted, end the walk with -1.
inline constexpr uint64_t kMaxMultipartDepth = 500;

// Walks [cursor, end), a stretch of the file; a null cursor walks nothing. An empty delimiter means
// one part that is no multipart. A delimiter that the header wrote with CR LF and that stands in
// the stretch with LF alone loses its CR for good.
//
// 1; 2 when the last image of the multipart had no place in the body and the multipart ended
// without a closing delimiter; the result of a report that was not 1; else a failure code: -1 also
// for nesting too deep and for a spent search budget (SearchBudget.h). The body keeps what it has.
int32_t WalkMimeParts(EmlMessage& message, const char* cursor, const char* end,
                      const TrackedBuffer<char>& delimiter, InlineImageContext& context,
                      SearchBudget& imageBudget, const AttachmentRequest* request);

}  // namespace tarn

#endif
