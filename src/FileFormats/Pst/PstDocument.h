// PstDocument.h - the road of a store from its file to one document.
#ifndef TARN_FILEFORMATS_PST_PSTDOCUMENT_H
#define TARN_FILEFORMATS_PST_PSTDOCUMENT_H

#include "FileFormats/Pst/DocumentRequest.h"
#include "Internal/PstFilterData.h"

namespace tarn {

// As ReadMessageDocument, of which it is one branch; the index is clamped to the messages of the
// store. HTML is always put between "<html>" and "</html>". Text is made only when it is asked for:
// a message without an HTML or RTF body is refused with StatusNotSupported otherwise. A text
// document starts with the bytes FF FE, which its length does not count. The text is UTF-16 as the
// store has it, the rows before it are UTF-8. What the store throws leaves the function.
Status ReadPstDocument(const DocumentRequest& request, PstFilterData& data, DocumentResult& result);

}  // namespace tarn

#endif
