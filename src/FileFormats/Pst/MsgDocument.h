// MsgDocument.h - the road of an MSG file to one document.
#ifndef TARN_FILEFORMATS_PST_MSGDOCUMENT_H
#define TARN_FILEFORMATS_PST_MSGDOCUMENT_H

#include "Internal/AttachmentRequest.h"
#include "Internal/PstFilterData.h"

namespace tarn {

// As ReadMessageDocument, of which it is one branch. A body that begins as RTF makes an RTF
// document, any other an HTML one, put between "<html>" and "</html>" unless its first tag is
// <html>. Without a body, and with `textOnly`, the plain text makes the document: EF BB BF and
// the text. Its length counts from the mark on, and says one more than the bytes of the text: its
// last two bytes fall outside, and of an empty text only EF is seen. A text that is gone after the
// header fields went into it is an empty document.
int32_t ReadMsgDocument(const char16_t* path, PstFilterData& data, uint32_t& kind, bool textOnly,
                        const AttachmentRequest* request);

}  // namespace tarn

#endif
