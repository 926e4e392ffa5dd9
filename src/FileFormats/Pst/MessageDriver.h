// MessageDriver.h - the road from a file to one document: reader, renderer, record.
#ifndef TARN_FILEFORMATS_PST_MESSAGEDRIVER_H
#define TARN_FILEFORMATS_PST_MESSAGEDRIVER_H

#include "Internal/AttachmentRequest.h"
#include "Internal/PstFilterData.h"

namespace tarn {

// Reads message `index` (0-based; a PST clamps it) of the file and puts its document into `data`;
// `kind` becomes the document's TarnDocumentKind. With a request nothing is rendered, and the
// request's callback sees the attachments. `path` is opened anew by the readers that need it,
// `handle` is open on the file and serves the EML reader.
//
// 1, or a failure: then `data` may hold a partial text, and `kind` stays. A format without a reader
// gives -9, a store or an MSG file without a path -814.
int32_t ReadMessageDocument(const char16_t* path, PstFilterData& data, int32_t& format,
                            int32_t& index, uint32_t& kind, bool textOnly, uint64_t handle,
                            const AttachmentRequest* request);

}  // namespace tarn

#endif
