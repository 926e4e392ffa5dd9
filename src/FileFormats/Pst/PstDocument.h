// PstDocument.h - the road of a store from its file to one document.
#ifndef TARN_FILEFORMATS_PST_PSTDOCUMENT_H
#define TARN_FILEFORMATS_PST_PSTDOCUMENT_H

#include "Internal/AttachmentRequest.h"
#include "Internal/PstFilterData.h"

namespace tarn {

// As ReadMessageDocument, of which it is one branch; `index` is clamped to the messages of the
// store. HTML is always put between "<html>" and "</html>". Text is asked for by `textOnly` only: a
// message without an HTML or RTF body is refused with -9 otherwise. A text document starts with the
// bytes FF FE, which its length does not count. What the store throws leaves the function.
int32_t ReadPstDocument(const char16_t* path, PstFilterData& data, int32_t& index, uint32_t& kind,
                        bool textOnly, uint64_t handle, const AttachmentRequest* request);

}  // namespace tarn

#endif
