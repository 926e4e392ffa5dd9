// MessageDriver.h - the road from a file to one document: reader, renderer, record.
#ifndef TARN_FILEFORMATS_PST_MESSAGEDRIVER_H
#define TARN_FILEFORMATS_PST_MESSAGEDRIVER_H

#include "FileFormats/Pst/DocumentRequest.h"
#include "Internal/PstFilterData.h"

namespace tarn {

// Reads a message and puts its document into `data`; on failure that may hold a partial text.
//   StatusOk
//   StatusNotSupported  also for a format without a reader
//   StatusNullArgument  a store or an MSG file without a path
//   others              of the format's reader and of the renderer
Status ReadMessageDocument(const DocumentRequest& request, PstFilterData& data,
                           DocumentResult& result);

}  // namespace tarn

#endif
