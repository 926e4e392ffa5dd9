// MapiAttachments.h - the attachments of a message (MS-OXCMSG 2.2.2).
#ifndef TARN_ARCHIVE_MAPIATTACHMENTS_H
#define TARN_ARCHIVE_MAPIATTACHMENTS_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "archive/mapi/MapiMessage.h"
#include "archive/model/Item.h"

namespace tarn::archive::mapi {

// All attachments, in their order. One that cannot be read is there with its trouble; where the
// list itself cannot be, it is empty with one of `troubles`.
std::vector<Attachment> ReadAttachments(MapiMessage& message, std::optional<uint32_t> codePage,
                                        std::vector<Trouble>& troubles);

// The bytes of attachment `index`, which is of that kind.
Outcome<std::unique_ptr<ByteSource>> OpenAttachment(MapiMessage& message, size_t index,
                                                    AttachmentKind kind);

}  // namespace tarn::archive::mapi

#endif
