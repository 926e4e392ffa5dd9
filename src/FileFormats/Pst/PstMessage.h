// PstMessage.h - one message of a store becomes a MailMessage.
#ifndef TARN_FILEFORMATS_PST_PSTMESSAGE_H
#define TARN_FILEFORMATS_PST_PSTMESSAGE_H

#include "FileFormats/Pst/StoreWalk.h"

namespace pststore {
class message;
}

namespace tarn {

// Reads the bodies of a message into list.records[index], and, of the `selected` message only, its
// header fields and inline images; `kind` is set by each body found, plain text, HTML and RTF in
// this order, so that the last one wins. With a request nothing of the record is filled: the
// selected message's attachments go to the request's callback.
//
// 1; 2 for a message that does not count; -1 without memory, and when subjects, header strings and
// bodies take more than a file of this size can hold; failures of DecodePstCompressedRtf, of
// InlinePstImages and of the callback. Exceptions of the store leave the function. Bodies stay as
// the store has them: the plain one is UTF-16 in a Unicode store.
int32_t ReadPstMessage(const pststore::message& source, uint32_t& kind, bool selected,
                       MessageList& list, int32_t index, StoreReading& reading);

}  // namespace tarn

#endif
