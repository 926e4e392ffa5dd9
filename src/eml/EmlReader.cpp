#include "eml/EmlReader.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "Common/ByteSearch.h"
#include "Common/ImagePass.h"
#include "eml/BodyChoice.h"
#include "eml/HeaderFields.h"
#include "eml/HeaderSearch.h"
#include "eml/MimeBoundary.h"
#include "eml/PartWalker.h"

namespace tarn {
namespace {

constexpr uint64_t kSeekFailed = UINT64_MAX;

// The size of the file, its position left at 0. The last byte is read on the way: a file that does
// not have one fails with -7, before any failed seek does with -4.
int32_t MeasureFile(uint64_t handle, uint64_t& size) {
  const uint64_t before = KernelFileSeek(handle, 0, KERNEL_SEEK_CURRENT);
  const uint64_t last = KernelFileSeek(handle, -1, KERNEL_SEEK_END);
  char byte = 0;
  if (KernelFileRead(handle, &byte, 1) != 1) return StatusReadFailed;
  size = KernelFileSeek(handle, 0, KERNEL_SEEK_CURRENT);
  if (before == kSeekFailed || last == kSeekFailed || size == kSeekFailed) return StatusSeekFailed;

  if (KernelFileSeek(handle, static_cast<int64_t>(before), KERNEL_SEEK_START) == kSeekFailed) {
    return StatusSeekFailed;
  }
  return KernelFileSeek(handle, 0, KERNEL_SEEK_START) == 0 ? StatusOk : StatusSeekFailed;
}

int32_t ReadWholeFile(uint64_t handle, EmlMessage& message) {
  uint64_t size = 0;
  const int32_t measured = MeasureFile(handle, size);
  if (measured != StatusOk) return measured;

  message.data = static_cast<char*>(KernelRealloc(nullptr, size + 1, TARN_HERE));
  if (message.data == nullptr) return StatusOutOfMemory;
  message.capacity = size + 1;
  if (KernelFileReadLarge(handle, message.data, size) != size) return StatusReadFailed;
  message.end = message.data + size;
  message.endCopy = message.end;
  return StatusOk;
}

// The empty line that ends the top header block, or the end of the file.
const char* FindTopHeaderLimit(const EmlMessage& message) {
  for (const std::string_view emptyLine : {"\r\n\r\n", "\n\n"}) {
    const char* const hit = FindBytes(message.data, message.end, emptyLine);
    if (hit != nullptr) return hit;
  }
  return message.end;
}

// A field that is there but empty has a length.
bool HasFieldsOfAMail(const EmlMessage& message) {
  const bool hasRecipient =
      message.to.length() != 0 || message.cc.length() != 0 || message.bcc.length() != 0;
  return message.date.length() != 0 && message.from.length() != 0 && hasRecipient;
}

// The first Content-Location anywhere in the file.
int32_t KeepLocation(EmlMessage& message) {
  constexpr std::string_view kName = "Content-Location:";
  const char* const hit = FindIgnoringCase(message.data, message.end, kName);
  if (hit == nullptr) return StatusOk;
  const char* const value = hit + kName.size();
  const auto length = static_cast<uint64_t>(FindLineEnd(value, message.end) - value);

  KernelBlock<char> location = AllocateBlock<char>(length + 1, TARN_HERE);
  if (!location) return StatusOutOfMemory;
  if (length != 0) std::memcpy(location.get(), value, length);
  location[length] = '\0';
  message.location = location.take();
  return StatusOk;
}

int32_t PrepareMultipart(EmlMessage& message, PstFilterData& filterData) {
  const int32_t kept = KeepLocation(message);
  if (kept != StatusOk) return kept;
  if (filterData.inlineFiles.data() != nullptr) return StatusOk;
  // An empty list grows by its increment, which is 5.
  return filterData.inlineFiles.reserve(0) != nullptr ? StatusOk : StatusOutOfMemory;
}

// A mail without a boundary is text, or of no type at all. The type stands behind the colon and the
// one byte that follows it.
bool IsTextMail(const EmlMessage& message) {
  const char* const line = FindHeaderLine(message.data, message.end, "Content-Type:");
  if (line == nullptr) return true;
  const char* const value = line + std::min<ptrdiff_t>(message.end - line, 14);
  return StartsWithIgnoringCase(value, message.end, "text/plain") ||
         StartsWithIgnoringCase(value, message.end, "text/html");
}

int32_t WalkMessage(EmlMessage& message, PstFilterData& filterData,
                    const AttachmentRequest* request) {
  InlineImageContext context;
  context.filterData = &filterData;
  context.body = &message.body;
  const auto fileSize = static_cast<uint64_t>(message.end - message.data);
  context.bodyLimit = BodyLimit(fileSize);
  SearchBudget budget = SearchBudget::ForImages(fileSize);
  ImagePass pass(message.body, ImagePass::LimitsFor(fileSize), budget);
  context.pass = &pass;

  TrackedBuffer<char> delimiter;
  const char* cursor = nullptr;
  const int32_t found = FindMimeBoundary(message.data, message.end, delimiter, &cursor);
  if (found < StatusOk) return found;
  if (found == StatusOk) {
    const int32_t prepared = PrepareMultipart(message, filterData);
    if (prepared != StatusOk) return prepared;
  } else {
    if (!IsTextMail(message)) return StatusNotSupported;
    cursor = message.data;
  }
  const Status walked =
      WalkMimeParts(message, cursor, message.end, delimiter, context, budget, request);
  // A request looks at attachments alone: its document is never made.
  return walked.ok() && request == nullptr ? pass.finish() : walked;
}

}  // namespace

int32_t ReadEmlMessage(EmlMessage& message, uint64_t handle, PstFilterData& filterData,
                       const AttachmentRequest* request) {
  int32_t status = ReadWholeFile(handle, message);
  if (status != StatusOk) return status;
  status = ParseEmlHeaders(message, FindTopHeaderLimit(message));
  if (status != StatusOk) return status;
  if (!HasFieldsOfAMail(message)) return StatusNotSupported;
  return WalkMessage(message, filterData, request);
}

}  // namespace tarn
