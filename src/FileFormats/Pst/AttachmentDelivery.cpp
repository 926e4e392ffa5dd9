#include "FileFormats/Pst/AttachmentDelivery.h"

#include "Common/ApiUtils.h"
#include "FileFormats/Pst/AttachmentCommon.h"

namespace tarn {
namespace {

Status WriteToFile(const char16_t* path, const TrackedBuffer<char>& data) {
  const FileGuard file(FileGuard::Write,
                       KernelFileOpen(path, KERNEL_OPEN_CREATE, KERNEL_OPEN_MODE));
  if (!file.isOpen()) return Status::FromCode(KernelMapLastError(StatusCreateFailed));
  if (KernelFileWriteLarge(file.handle(), data.data(), data.length()) != data.length()) {
    return Status::FromCode(KernelMapLastError(StatusWriteFailed));
  }
  return StatusOk;
}

}  // namespace

Status DeliverAttachment(void* context, TrackedBuffer<char>* data, const char16_t* /*name*/,
                         PropertyList* /*properties*/) {
  auto* const host = static_cast<ExtractAttachmentContext*>(context);
  if (host == nullptr) return StatusNullArgument;
  if (host->outputPath != nullptr) return WriteToFile(host->outputPath, *data);

  data->shrinkToFit();
  host->size = data->length();
  host->data = data->take().take();
  return StatusDone;
}

}  // namespace tarn
