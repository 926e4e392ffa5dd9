// AttachmentRequest.h - what an attachment call asks of the readers.
//
// The record is a local of the call and goes down through the driver and the reader, which calls
// back once for each attachment. A reader that is handed one renders nothing.
#ifndef TARN_INTERNAL_ATTACHMENTREQUEST_H
#define TARN_INTERNAL_ATTACHMENTREQUEST_H

#include "Internal/Tarnclasses_.h"

namespace tarn {

using PropertyList = TrackedBuffer<AttachmentProperty>;

inline constexpr uint32_t kAllAttachments = UINT32_MAX;

// Takes one attachment: its bytes, its file name (wide, or null) and its properties (or null). The
// callback may empty the buffer or the list and so make their blocks its own.
//   StatusOk    go on
//   StatusDone  stop with success
//   others      stop with that status
using AttachmentCallback = Status (*)(void* user, TrackedBuffer<char>* data, const char16_t* name,
                                      PropertyList* properties);

struct AttachmentRequest {
  uint32_t index = kAllAttachments;  // 1-based number of the wanted attachment, or all
  bool infoOnly = false;  // the properties are wanted, and the bytes only if they are at hand
  AttachmentCallback callback = nullptr;
  void* user = nullptr;
};

}  // namespace tarn

#endif
