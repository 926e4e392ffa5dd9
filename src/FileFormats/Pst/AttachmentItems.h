// AttachmentItems.h - the items of fltGetAttachmentInfo's answer, made of what the readers report.
//
// An item owns its name, its description and its properties; a list of items owns the array alone.
#ifndef TARN_FILEFORMATS_PST_ATTACHMENTITEMS_H
#define TARN_FILEFORMATS_PST_ATTACHMENTITEMS_H

#include "Internal/AttachmentRequest.h"

namespace tarn {

using ItemList = TrackedBuffer<AttachmentInfoItem>;

// The callback of the request; `list` is the ItemList. Appends an item with the name, the size and
// the properties of one attachment. Properties with a field of their own leave the list for it; the
// others stay together, in a block that the item takes. On failure nothing is appended.
//   StatusOk
//   StatusNullArgument  null list
//   StatusOutOfMemory
//   others              the list's last error
Status AddAttachmentItem(void* list, TrackedBuffer<char>* data, const char16_t* name,
                         PropertyList* properties);

// Takes a final ":" or "=" off the name, unless it is all there is: "Content-ID:" reaches the host
// as "Content-ID", "name=" as "name".
void TrimPropertyName(AttachmentProperty& property);

// Frees all that an item owns and clears it.
void ReleaseItem(AttachmentInfoItem& item);

}  // namespace tarn

#endif
