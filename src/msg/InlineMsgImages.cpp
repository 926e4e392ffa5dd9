// Images attached to an MSG file go into its HTML body.

#include <new>

#include "Common/ByteSearch.h"
#include "Common/InlineImages.h"
#include "Common/SearchBudget.h"
#include "msg/AttachmentPath.h"
#include "msg/MsgAttachments.h"
#include "msg/MsgStreams.h"

namespace tarn {
namespace {

// Puts one attachment after the other into the body. In a sound file no two of them share their
// bytes; a damaged one can make thousands of large images of the same.
class InlinePass {
 public:
  InlinePass(SizedBytes& body, PstFilterData& data, const CompoundStorage& storage)
      : storage_(storage),
        budget_(SearchBudget::ForImages(storage.file->fileSize)),
        imageBytesLeft_(2 * storage.file->fileSize) {
    context_.filterData = &data;
    context_.body = &body;
    context_.bodyLimit = BodyLimit(storage.file->fileSize);
  }

  int32_t place(AttachmentPath path);

 private:
  bool aimAt(const char* needle);
  int32_t findReference(const SizedBytes& contentId, const SizedBytes& name, bool& found);

  const CompoundStorage& storage_;
  InlineImageContext context_;
  SearchBudget budget_;
  uint64_t imageBytesLeft_;
};

// Whether the body holds the needle; then it is what is replaced, from there on.
bool InlinePass::aimAt(const char* needle) {
  const char* const start = context_.body->data;
  const char* const end = start + context_.body->length;
  const char* const found = FindBytes(start, end, needle);
  budget_.spend(static_cast<uint64_t>((found != nullptr ? found : end) - start));
  if (found == nullptr) return false;
  context_.needle = needle;
  context_.searchOffset = static_cast<uint64_t>(found - start);
  return true;
}

// A content id wins over a file name; one that occurs nowhere leaves the matching to the name.
int32_t InlinePass::findReference(const SizedBytes& contentId, const SizedBytes& name,
                                  bool& found) {
  context_.cidText.length = 0;
  context_.cidTextFlag = 1;
  found = false;
  if (!contentId.isEmptyText()) {
    if (AppendFormat(context_.cidText, context_.cidTextFlag, "cid:%s", contentId.data) == 0) {
      return StatusOutOfMemory;
    }
    found = aimAt(context_.cidText.data);
  }
  if (!found) found = aimAt(name.data);
  return budget_.isSpent() ? int32_t{StatusOutOfMemory} : int32_t{StatusOk};
}

int32_t InlinePass::place(AttachmentPath path) {
  SizedBytes name;
  const int32_t read = ReadMsgTextProperty(storage_, path.of("__substg1.0_3707"), name);
  if (read != StatusOk || name.isEmptyText()) {
    const int32_t second = ReadMsgTextProperty(storage_, path.of("__substg1.0_3704"), name);
    if (second != StatusOk || name.isEmptyText()) return second;
  }
  SizedBytes contentId;
  ReadMsgTextProperty(storage_, path.of("__substg1.0_3712"), contentId);
  if (context_.body->data == nullptr || context_.body->length == 0) return StatusOk;

  context_.name = name.data;
  context_.contentId = contentId.data;
  bool found = false;
  const int32_t searched = findReference(contentId, name, found);
  if (searched != StatusOk || !found) return searched;
  if (!path.hasRoomForData()) return StatusOk;

  std::optional<CompoundStream> stream = OpenStream(storage_, path.of("__substg1.0_37010102"));
  if (!stream) return StatusOk;
  if (stream->size() > imageBytesLeft_) return StatusOutOfMemory;
  imageBytesLeft_ -= stream->size();
  KernelBlock<char> image;
  uint64_t length = 0;
  const int32_t loaded = ReadWholeStream(&*stream, image, length);
  if (loaded != StatusOk) return loaded;
  const int32_t status = RewriteInlineImage(context_, image.get(), length);
  // The whole body may have been written anew.
  budget_.spend(context_.body->length);
  return status;
}

}  // namespace

int32_t InlineMsgImages(MailMessage& message, PstFilterData& data,
                        const CompoundStorage& storage) try {
  InlinePass pass(message.body, data, storage);
  for (const KernelString& name : ListAttachments(storage)) {
    const int32_t status = pass.place(AttachmentPath(name));
    if (status < StatusOk) return status;
    ++data.attachmentCount;
  }
  return StatusOk;
} catch (const std::bad_alloc&) {
  return StatusOutOfMemory;
}

}  // namespace tarn
