// Images attached to an MSG file go into its HTML body.

#include <new>
#include <optional>

#include "Common/ImageAim.h"
#include "Common/ImagePass.h"
#include "Common/InlineImages.h"
#include "Common/SearchBudget.h"
#include "msg/AttachmentPath.h"
#include "msg/MsgAttachments.h"
#include "msg/MsgStreams.h"

namespace tarn {
namespace {

// What one pass may cost. In a sound file no two attachments share their bytes; a damaged one can
// make thousands of large images of the same.
struct ImageBudget {
  explicit ImageBudget(uint64_t fileSize)
      : searches(SearchBudget::ForImages(fileSize)), imageBytes(2 * fileSize) {}

  SearchBudget searches;
  uint64_t imageBytes;
};

// The text as AimAtReference takes it.
const char* TextOrNull(const SizedBytes& text) {
  return text.isEmptyText() ? nullptr : text.data();
}

int32_t InlineOneMsgAttachment(const CompoundStorage& storage, AttachmentPath path,
                               InlineImageContext& context, ImageBudget& budget) {
  SizedBytes name;
  const int32_t read = ReadMsgTextProperty(storage, path.of("__substg1.0_3707"), name);
  if (read != StatusOk || name.isEmptyText()) {
    const int32_t second = ReadMsgTextProperty(storage, path.of("__substg1.0_3704"), name);
    if (second != StatusOk || name.isEmptyText()) return second;
  }
  SizedBytes contentId;
  ReadMsgTextProperty(storage, path.of("__substg1.0_3712"), contentId);
  if (context.body->data() == nullptr || context.body->length() == 0) return StatusOk;

  context.name = name.data();
  context.contentId = contentId.data();
  bool found = false;
  const int32_t searched =
      AimAtReference(context, budget.searches, TextOrNull(contentId), name.data(), found);
  if (searched != StatusOk || !found) return searched;
  if (!path.hasRoomForData()) return StatusOk;

  std::optional<CompoundStream> stream = storage.file->open(path.of("__substg1.0_37010102"));
  if (!stream) return StatusOk;
  if (stream->size() > budget.imageBytes) return StatusOutOfMemory;
  budget.imageBytes -= stream->size();
  KernelBlock<char> image;
  uint64_t length = 0;
  const int32_t loaded = ReadWholeStream(&*stream, image, length);
  if (loaded != StatusOk) return loaded;
  return RewriteInlineImage(context, image.get(), length);
}

// The images up to the first that fails.
int32_t PlaceImages(InlineImageContext& context, const CompoundStorage& storage,
                    ImageBudget& budget) try {
  for (const KernelString& name : ListAttachments(storage)) {
    const int32_t status = InlineOneMsgAttachment(storage, AttachmentPath(name), context, budget);
    if (status < StatusOk) return status;
    ++context.filterData->attachmentCount;
  }
  return StatusOk;
} catch (const std::bad_alloc&) {
  return StatusOutOfMemory;
}

}  // namespace

int32_t InlineMsgImages(MailMessage& message, PstFilterData& data, const CompoundStorage& storage) {
  const uint64_t fileSize = storage.file->size();
  ImageBudget budget(fileSize);
  ImagePass pass(message.body, ImagePass::LimitsFor(fileSize), budget.searches);
  InlineImageContext context;
  context.filterData = &data;
  context.body = &message.body;
  context.bodyLimit = BodyLimit(fileSize);
  context.pass = &pass;
  const int32_t status = PlaceImages(context, storage, budget);
  // What was placed before a failure stays in the body.
  const int32_t finished = pass.finish();
  return status == StatusOk ? finished : status;
}

}  // namespace tarn
