// fltExtractAttachment: the bytes of one attachment, to a file or to memory.

#include "Common/ApiUtils.h"
#include "FileFormats/Pst/AttachmentCommon.h"
#include "FileFormats/Pst/Frame.h"

namespace tarn {
namespace {

int32_t WriteToFile(const char16_t* path, const TrackedBuffer<char>& data) {
  const FileGuard file(FileGuard::Write,
                       KernelFileOpen(path, KERNEL_OPEN_CREATE, KERNEL_OPEN_MODE));
  if (!file.isOpen()) return KernelMapLastError(StatusCreateFailed);
  if (KernelFileWriteLarge(file.handle(), data.data, data.length) != data.length) {
    return KernelMapLastError(StatusWriteFailed);
  }
  return StatusOk;
}

// To a file the walk goes on to its end; to memory it stops here.
int32_t Deliver(void* user, TrackedBuffer<char>* data, const char16_t*, PropertyList*) {
  auto* const context = static_cast<ExtractAttachmentContext*>(user);
  if (context == nullptr) return StatusNullArgument;
  if (context->outputPath != nullptr) return WriteToFile(context->outputPath, *data);

  data->data = ShrinkToFit(data->data, data->length, data->capacity);
  context->size = data->length;
  context->data = data->take();
  return StatusDone;
}

}  // namespace

int32_t ExtractAttachment(ExtractAttachmentContext* context) {
  if (context == nullptr) return StatusNullArgument;
  if (context->attachmentNumber < 1) return StatusBadArgument;

  const AttachmentRequest request = {static_cast<uint32_t>(context->attachmentNumber), 0, Deliver,
                                     context};
  int32_t format = FormatNone;
  const int32_t result = WalkAttachments(context->path, context->options, request, format);
  return result == StatusDone ? static_cast<int32_t>(StatusOk) : result;
}

}  // namespace tarn
