// MsgAttachments.h - the attachments of an MSG file: storages under the root whose names begin with
// "__attach_version1.0_" and go on. Their numbers are their places in the listing, from 1.
#ifndef TARN_MSG_MSGATTACHMENTS_H
#define TARN_MSG_MSGATTACHMENTS_H

#include "Internal/AttachmentRequest.h"
#include "Internal/MailMessage.h"
#include "Internal/PstFilterData.h"
#include "compound/CompoundFile.h"
#include "msg/AttachmentPath.h"

namespace tarn {

// The names of the attachments' storages. One too long for a path (AttachmentPath.h) is left out
// and has no number. Throws std::bad_alloc.
KernelVector<KernelString> ListAttachments(const CompoundStorage& storage);

// Reads the file name of the attachment at the path: the long one, or else the short one. As
// ReadMsgTextProperty; a name that is not there is an empty text.
Status ReadMsgFileName(const CompoundStorage& storage, AttachmentPath& path, SizedBytes& name);

// Puts the attachments that the message's body refers to into it, by "cid:" and their content id
// or else by their file name, and counts all attachments in data.attachmentCount. The first failure
// ends the pass, and its attachment is not counted.
//   StatusOk
//   StatusOutOfMemory  also once the searches have passed over too much (SearchBudget.h), and for
//                      images that are together larger than twice the file
//   others             of RewriteInlineImage, StatusFailed among them, and of reading a name
Status InlineMsgImages(MailMessage& message, PstFilterData& data, const CompoundStorage& storage);

// Calls the request back for the attachments that it asks for; an embedded message comes as an MSG
// file of its own. An attachment with neither is passed over and keeps its number.
//   StatusOk
//   StatusOutOfMemory
//   others             of the callback below StatusOk; of the list and of ExportEmbeddedMessage
Status EnumerateMsgAttachments(const CompoundStorage& storage, const AttachmentRequest& request);

}  // namespace tarn

#endif
