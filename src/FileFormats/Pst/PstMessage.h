// PstMessage.h - the wanted message of a store becomes a MailMessage; those before it are passed.
#ifndef TARN_FILEFORMATS_PST_PSTMESSAGE_H
#define TARN_FILEFORMATS_PST_PSTMESSAGE_H

#include "FileFormats/Pst/StoreWalk.h"

namespace pststore {
class message;
}

namespace tarn {

// Reads the wanted message into the list's record: its header fields, its bodies with inline
// images. `kind` is set by each body found, plain text, HTML and RTF in this order, so that the
// last one wins. With a request nothing of the record is filled: the message's attachments go to
// the request's callback.
//
// Exceptions of the store leave the function. Bodies stay as the store has them: the plain one is
// UTF-16 in a Unicode store.
//   StatusOk
//   StatusDone         the message does not count
//   StatusOutOfMemory  also when subjects, header strings and bodies take more than a file of this
//                      size can hold
//   others             of DecodePstCompressedRtf, of InlinePstImages and of the callback
Status ReadPstMessage(const pststore::message& source, TarnDocumentKind& kind, MessageList& list,
                      StoreReading& reading);

// The same of a message before the wanted one, but for its header fields, images and attachments,
// which nobody asks for. Its bodies are read piece by piece and not kept: `kind`, statuses and
// exceptions are those of a message that is read.
Status PassPstMessage(const pststore::message& source, TarnDocumentKind& kind,
                      StoreReading& reading);

}  // namespace tarn

#endif
