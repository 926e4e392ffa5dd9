#include "FileFormats/Pst/AttachmentCommon.h"

#include "Common/ApiUtils.h"
#include "FileFormats/Pst/DetectFormat.h"
#include "FileFormats/Pst/MessageDriver.h"
#include "FileFormats/Pst/SiblingCall.h"

namespace tarn {

Status WalkAttachments(const char16_t* path, const AttachmentOptions* options,
                       const AttachmentRequest& request, TarnFormat& readerFormat) {
  const FileGuard file(FileGuard::Read, KernelFileOpen(path, KERNEL_OPEN_READ, KERNEL_OPEN_MODE));
  if (!file.isOpen()) return StatusOpenFailed;
  DocumentRequest wanted;
  if (!DetectFormat(file.handle(), wanted.format).ok()) return StatusReadFailed;

  wanted.path = path;
  wanted.index = MessageIndex(options != nullptr ? options->messageNumber : 0);
  wanted.textOnly = true;
  wanted.handle = file.handle();
  wanted.attachments = &request;
  PstFilterData scratch;
  DocumentResult unused;
  const Status walked = ReadMessageDocument(wanted, scratch, unused);
  readerFormat = scratch.readerFormat;
  return walked;
}

}  // namespace tarn
