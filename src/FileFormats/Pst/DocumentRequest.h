// DocumentRequest.h - what is wanted of a file, and what came of it.
#ifndef TARN_FILEFORMATS_PST_DOCUMENTREQUEST_H
#define TARN_FILEFORMATS_PST_DOCUMENTREQUEST_H

#include "Internal/AttachmentRequest.h"
#include "Tarnbase/Kernel.h"

namespace tarn {

struct DocumentRequest {
  const char16_t* path = nullptr;  // opened anew by the readers of stores and of MSG files
  TarnFormat format = FormatNone;  // of the file
  int32_t index = 0;               // of the message, from 0; a store clamps it
  bool textOnly = false;           // the plain text is wanted; a mail file has one document only
  uint64_t handle = KERNEL_BAD_HANDLE;             // open on the file
  const AttachmentRequest* attachments = nullptr;  // render nothing and call this back instead
};

struct DocumentResult {
  TarnDocumentKind kind = DocumentNone;  // of the document
  int32_t index = 0;                     // of the message that it is of
};

}  // namespace tarn

#endif
