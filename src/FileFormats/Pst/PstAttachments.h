// PstAttachments.h - the attachments of a store's message, one callback each.
#ifndef TARN_FILEFORMATS_PST_PSTATTACHMENTS_H
#define TARN_FILEFORMATS_PST_PSTATTACHMENTS_H

#include "FileFormats/Pst/StoreLimits.h"
#include "Internal/AttachmentRequest.h"

namespace pststore {
class attachment;
class message;
}  // namespace pststore

namespace tarn {

// Calls the request back for the attachments that it asks for, in the order of the attachment
// table. An embedded message comes as the raw bytes of its property. What the store throws inside
// the loop ends the walk silently, and so do attachments and texts of them beyond what a file of
// this size can hold. StatusOk; failures of a property and of the callback.
Status EnumeratePstAttachments(const pststore::message& source, const AttachmentRequest& request,
                               uint64_t fileSize);

// Adds a string property of the attachment; nothing for a missing or empty one. Takes its bytes
// from `textLeft`, and throws pststore::database_corrupt when there are fewer. Statuses of
// AddAttachmentProperty.
Status AddAttachmentPropertyFromBag(PropertyList& list, std::string_view name,
                                    const pststore::attachment& source, uint16_t property,
                                    uint64_t& textLeft);

}  // namespace tarn

#endif
