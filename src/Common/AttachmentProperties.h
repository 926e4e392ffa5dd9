// AttachmentProperties.h - property lists of attachments, as the host gets them.
#ifndef TARN_COMMON_ATTACHMENTPROPERTIES_H
#define TARN_COMMON_ATTACHMENTPROPERTIES_H

#include "Internal/AttachmentRequest.h"

namespace tarn {

// Appends a property to the list, name and value turned from UTF-8 into UTF-16 and cut to 127
// units each, even inside a surrogate pair. The whole value is converted; what is kept ends at its
// first NUL.
//   StatusOk
//   StatusFailed       a text that is not empty is no UTF-8, be it after that NUL
//   StatusOutOfMemory
//   others             the list's last error
Status AddAttachmentProperty(PropertyList& list, std::string_view name, std::string_view value);

// The same for a value that is UTF-16 already; it ends at its first NUL too.
Status AddWideAttachmentProperty(PropertyList& list, std::string_view name,
                                 std::u16string_view value);

// The same for a FILETIME: seconds since 1970 in decimal digits. Times before that come out as
// large unsigned numbers.
Status AddTimeAttachmentProperty(PropertyList& list, std::string_view name, uint64_t fileTime);

}  // namespace tarn

#endif
