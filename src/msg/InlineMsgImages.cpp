// Images attached to an MSG file go into its HTML body.

#include <new>
#include <optional>

#include "Common/ImageAim.h"
#include "Common/ImagePass.h"
#include "Common/InlineImages.h"
#include "Common/SearchBudget.h"
#include "msg/MsgAttachments.h"
#include "msg/MsgStreams.h"
#include "msg/PropertyStreams.h"

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

Status InlineOneMsgAttachment(const CompoundStorage& storage, AttachmentPath path,
                              InlineImageContext& context, ImageBudget& budget) {
  SizedBytes name;
  const Status read = ReadMsgFileName(storage, path, name);
  if (!read.ok() || name.isEmptyText()) return read;
  SizedBytes contentId;
  ReadMsgTextProperty(storage, path.of(msg_stream::kContentId), contentId).ignore();
  if (context.body->length() == 0) return StatusOk;

  context.name = name.data();
  context.contentId = contentId.data();
  bool found = false;
  const Status searched =
      AimAtReference(context, budget.searches, TextOrNull(contentId), name.data(), found);
  if (!searched.ok() || !found) return searched;
  if (!path.hasRoomForData()) return StatusOk;

  std::optional<CompoundStream> stream = storage.file->open(path.of(msg_stream::kData));
  if (!stream) return StatusOk;
  if (stream->size() > budget.imageBytes) return StatusOutOfMemory;
  budget.imageBytes -= stream->size();
  SizedBytes image;
  const Status loaded = ReadWholeStream(&*stream, image);
  return loaded.ok() ? RewriteInlineImage(context, image.view()) : loaded;
}

// The images up to the first that fails.
Status PlaceImages(InlineImageContext& context, const CompoundStorage& storage,
                   ImageBudget& budget) try {
  for (const KernelString& name : ListAttachments(storage)) {
    const Status status = InlineOneMsgAttachment(storage, AttachmentPath(name), context, budget);
    if (status.failed()) return status;
    ++context.filterData->attachmentCount;
  }
  return StatusOk;
} catch (const std::bad_alloc&) {
  return StatusOutOfMemory;
}

}  // namespace

Status InlineMsgImages(MailMessage& message, PstFilterData& data, const CompoundStorage& storage) {
  const uint64_t fileSize = storage.file->size();
  ImageBudget budget(fileSize);
  ImagePass pass(message.body, ImagePass::LimitsFor(fileSize), budget.searches);
  InlineImageContext context;
  context.filterData = &data;
  context.body = &message.body;
  context.bodyLimit = BodyLimit(fileSize);
  context.pass = &pass;
  const Status status = PlaceImages(context, storage, budget);
  // What was placed before a failure stays in the body.
  const Status finished = pass.finish();
  return status.ok() ? finished : status;
}

}  // namespace tarn
