#include "FileFormats/Pst/PstInlineImages.h"

#include <algorithm>
#include <exception>

#include "Common/ApiUtils.h"
#include "Common/ImageAim.h"
#include "Common/ImagePass.h"
#include "FileFormats/Pst/PstStreams.h"
#include "pststore/StoreObjects.h"

namespace tarn {
namespace {

constexpr pststore::ushort kData = 0x3701;
constexpr pststore::ushort kLongFileName = 0x3707;

// A name in UTF-8, in a block that serves one attachment after the other.
class NameBuffer {
 public:
  // `room` bytes hold the text and its NUL. An empty name is the empty text, and one that does not
  // convert is null. StatusOk or StatusOutOfMemory.
  Status set(const pststore::wstring& name, uint64_t room) {
    text_ = "";
    if (name.empty()) return StatusOk;
    const auto convert = [&](char* block) {
      // Cleared, so that the text ends where the conversion does: not every kernel tells the bytes.
      std::memset(block, 0, room);
      text_ = ConvertToUtf8(name, {block, room - 1}) != 0 ? block : nullptr;
      return std::max(room, block_.length());
    };
    return block_.refill(room, convert) ? StatusOk : StatusOutOfMemory;
  }

  const char* get() const { return text_; }
  bool isEmpty() const { return text_ == nullptr || *text_ == '\0'; }

 private:
  SizedBytes block_;
  const char* text_ = nullptr;
};

pststore::wstring LongFileName(const pststore::attachment& attachment) {
  const pststore::property_bag& properties = attachment.get_property_bag();
  if (!properties.prop_exists(kLongFileName)) return {};
  return properties.read_prop<pststore::wstring>(kLongFileName);
}

class InlinePass {
 public:
  InlinePass(SizedBytes& body, StoreReading& reading)
      : reading_(reading),
        budget_(reading.imageSearches),
        pass_(body, ImagePass::LimitsFor(reading.fileSize), budget_) {
    context_.filterData = &reading.data;
    context_.body = &body;
    context_.bodyLimit = BodyLimit(reading.fileSize);
    context_.pass = &pass_;
  }

  Status place(const pststore::attachment& attachment);
  // Writes the body with the images placed so far.
  Status finish() { return pass_.finish(); }

 private:
  Status readNames(const pststore::attachment& attachment);
  bool takeImage(uint64_t size);

  StoreReading& reading_;
  SearchBudget& budget_;
  ImagePass pass_;
  InlineImageContext context_;
  NameBuffer plainName_;
  NameBuffer cidName_;
};

Status InlinePass::readNames(const pststore::attachment& attachment) {
  const pststore::wstring plain = pststore::get_filename(attachment);
  const Status status = plainName_.set(plain, 4 * plain.size() + 4);
  if (!status.ok()) return status;
  const pststore::wstring cid = LongFileName(attachment);
  budget_.spend(sizeof(char16_t) * (plain.size() + cid.size()));
  if (budget_.isSpent()) return StatusOutOfMemory;
  return cidName_.set(cid, 3 * cid.size() + 1);
}

// Whether the image may be read, and written to its file.
bool InlinePass::takeImage(uint64_t size) {
  const bool isWritten = context_.filterData->useTempFile;
  return TakeFrom(reading_.imageBytesLeft, size) &&
         (!isWritten || TakeFrom(reading_.imageBytesLeft, size));
}

Status InlinePass::place(const pststore::attachment& attachment) {
  pststore::prop_stream stream(OpenOnce(attachment.get_property_bag(), kData));
  const uint64_t size = SizeByEnd(stream);
  Status status = readNames(attachment);
  if (!status.ok()) return status;
  if (context_.body->length() == 0 || (plainName_.isEmpty() && cidName_.isEmpty())) return StatusOk;

  context_.contentId = cidName_.get();
  context_.name = plainName_.get();
  bool found = false;
  status = AimAtReference(context_, budget_, cidName_.isEmpty() ? nullptr : cidName_.get(),
                          plainName_.isEmpty() ? nullptr : plainName_.get(), found);
  if (!status.ok() || !found) return status;
  if (size == 0 || !takeImage(size)) return StatusOutOfMemory;
  KernelBlock<char> image = AllocateBlock<char>(size, TARN_HERE);
  if (!image) return StatusOutOfMemory;
  ReadFromStart(stream, image.get(), size);
  return RewriteInlineImage(context_, {image.get(), size});
}

// The images up to the first that fails.
Status PlaceImages(const pststore::message& source, uint32_t attachmentCount, StoreReading& reading,
                   InlinePass& pass) {
  try {
    const pststore::attachment_iterator end = pststore::attachment_end(source);
    uint64_t number = 0;
    for (auto at = pststore::attachment_begin(source); at != end && number < attachmentCount;
         ++at, ++number) {
      if (!TakeFrom(reading.attachmentsLeft, 1)) break;
      const Status status = pass.place(pststore::make_attachment(at));
      if (status.failed()) return status;
    }
  } catch (const std::exception&) {
    // The images placed so far stay.
  }
  return StatusOk;
}

}  // namespace

Status InlinePstImages(const pststore::message& source, uint32_t attachmentCount, SizedBytes& body,
                       StoreReading& reading) {
  reading.data.attachmentCount = attachmentCount;
  const uint64_t room = std::min<uint64_t>(attachmentCount, AttachmentLimit(reading.fileSize));
  if (reading.data.inlineFiles.reserve(room) == nullptr) return StatusOk;

  InlinePass pass(body, reading);
  const Status placed = PlaceImages(source, attachmentCount, reading, pass);
  // What was placed before a failure stays in the body.
  const Status finished = pass.finish();
  return placed.ok() ? finished : placed;
}

}  // namespace tarn
