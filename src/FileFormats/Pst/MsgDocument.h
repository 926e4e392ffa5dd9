// MsgDocument.h - the road of an MSG file to one document.
#ifndef TARN_FILEFORMATS_PST_MSGDOCUMENT_H
#define TARN_FILEFORMATS_PST_MSGDOCUMENT_H

#include "FileFormats/Pst/DocumentRequest.h"
#include "Internal/PstFilterData.h"

namespace tarn {

// As ReadMessageDocument, of which it is one branch. A body that begins as RTF makes an RTF
// document, any other an HTML one, put between "<html>" and "</html>" unless its first tag is
// <html>. Without a body, and when text is asked for, the plain text makes the document: EF BB BF
// and the text. Its length counts from the mark on, and says one more than the bytes of the text:
// its last two bytes fall outside, and of an empty text only EF is seen.
Status ReadMsgDocument(const DocumentRequest& request, PstFilterData& data, DocumentResult& result);

}  // namespace tarn

#endif
