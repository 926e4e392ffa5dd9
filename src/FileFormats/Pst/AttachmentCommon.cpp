#include "FileFormats/Pst/AttachmentCommon.h"

#include "Common/ApiUtils.h"
#include "FileFormats/Pst/DetectFormat.h"
#include "FileFormats/Pst/MessageDriver.h"
#include "FileFormats/Pst/SiblingCall.h"
#include "Internal/PstFilterData.h"

namespace tarn {

int32_t WalkAttachments(const char16_t* path, const AttachmentOptions* options,
                        const AttachmentRequest& request, int32_t& readerFormat) {
  const FileGuard file(FileGuard::Read, KernelFileOpen(path, KERNEL_OPEN_READ, KERNEL_OPEN_MODE));
  if (!file.isOpen()) return StatusOpenFailed;
  int32_t format = FormatNone;
  if (DetectFormat(file.handle(), format) != StatusOk) return StatusReadFailed;

  PstFilterData scratch;
  int32_t index = MessageIndex(options != nullptr ? options->messageNumber : 0);
  uint32_t kind = DocumentNone;
  const int32_t result =
      ReadMessageDocument(path, scratch, format, index, kind, true, file.handle(), &request);
  readerFormat = scratch.readerFormat;
  return result;
}

}  // namespace tarn
