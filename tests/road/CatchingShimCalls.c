#include "CatchingShimCalls.h"

#include <string.h>

int32_t ListFromC(const char16_t* path) {
  AttachmentOptions options;
  GetAttachmentInfoContext context;
  memset(&options, 0, sizeof options);
  memset(&context, 0, sizeof context);
  options.messageNumber = 1;
  context.path = path;
  context.options = &options;
  return ShimGetAttachmentInfo(&context);
}

int32_t ExtractFromC(const char16_t* path) {
  AttachmentOptions options;
  ExtractAttachmentContext context;
  memset(&options, 0, sizeof options);
  memset(&context, 0, sizeof context);
  options.messageNumber = 1;
  context.path = path;
  context.options = &options;
  context.attachmentNumber = 1;
  return ShimExtractAttachment(&context);
}
