#include "eml/EmlReader.h"

#include <algorithm>

#include "Common/ByteSearch.h"
#include "Common/ImagePass.h"
#include "eml/HeaderFields.h"
#include "eml/HeaderSearch.h"
#include "eml/MimeBoundary.h"
#include "eml/PartWalker.h"

namespace tarn {
namespace {

constexpr uint64_t kSeekFailed = UINT64_MAX;

// The size of the file, its position left at 0. The last byte is read on the way: a file that does
// not have one fails with StatusReadFailed, before any failed seek does with StatusSeekFailed.
Status MeasureFile(uint64_t handle, uint64_t& size) {
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

Status ReadWholeFile(uint64_t handle, EmlMessage& message) {
  uint64_t size = 0;
  if (const Status measured = MeasureFile(handle, size); !measured.ok()) return measured;
  bool isWhole = false;
  const auto read = [&](char* block) {
    isWhole = KernelFileReadLarge(handle, block, size) == size;
    return isWhole ? size : 0;
  };
  if (!message.data.overwrite(size + 1, read)) return StatusOutOfMemory;
  return isWhole ? StatusOk : StatusReadFailed;
}

// The empty line that ends the top header block, or the end of the file.
size_t FindTopHeaderLimit(std::string_view file) {
  for (const std::string_view emptyLine : {"\r\n\r\n", "\n\n"}) {
    const size_t hit = FindBytes(file, emptyLine);
    if (hit != npos) return hit;
  }
  return file.size();
}

// A field that is there but empty has a length.
bool HasFieldsOfAMail(const EmlMessage& message) {
  const bool hasRecipient =
      message.to.length() != 0 || message.cc.length() != 0 || message.bcc.length() != 0;
  return message.date.length() != 0 && message.from.length() != 0 && hasRecipient;
}

// The first Content-Location anywhere in the file.
Status KeepLocation(EmlMessage& message) {
  constexpr std::string_view kName = "Content-Location:";
  const std::string_view file = message.file();
  const size_t hit = FindIgnoringCase(file, kName);
  if (hit == npos) return StatusOk;
  const size_t value = hit + kName.size();
  return message.location.append(file.substr(value, FindLineEnd(file, value) - value));
}

Status PrepareMultipart(EmlMessage& message, PstFilterData& filterData) {
  if (const Status kept = KeepLocation(message); !kept.ok()) return kept;
  if (filterData.inlineFiles.hasBlock()) return StatusOk;
  // An empty list grows by its increment, which is 5.
  return filterData.inlineFiles.reserve(0) != nullptr ? StatusOk : StatusOutOfMemory;
}

// A mail without a boundary is text, or of no type at all.
bool IsTextMail(std::string_view file) {
  const size_t value = FindFixedValue(file, "Content-Type:");
  if (value == npos) return true;
  const std::string_view type = file.substr(value);
  return StartsWithIgnoringCase(type, "text/plain") || StartsWithIgnoringCase(type, "text/html");
}

Status WalkMessage(EmlMessage& message, PstFilterData& filterData,
                   const AttachmentRequest* request) {
  const std::string_view file = message.file();
  SearchBudget budget = SearchBudget::ForImages(file.size());
  ImagePass pass(message.body, ImagePass::LimitsFor(file.size()), budget);
  InlineImageContext context;
  context.filterData = &filterData;
  context.body = &message.body;
  context.bodyLimit = BodyLimit(file.size());
  context.pass = &pass;

  TrackedBuffer<char> delimiter;
  size_t cursor = 0;
  const Status found = FindMimeBoundary(file, delimiter, &cursor);
  if (found.failed()) return found;
  if (found.ok()) {
    if (const Status prepared = PrepareMultipart(message, filterData); !prepared.ok()) {
      return prepared;
    }
  } else if (!IsTextMail(file)) {
    return StatusNotSupported;
  }
  const Status walked =
      WalkMimeParts(message, cursor, delimiter.view(), {context, budget}, request);
  // A request looks at attachments alone: its document is never made.
  if (!walked.ok() || request != nullptr) return walked;
  return pass.finish();
}

}  // namespace

Status ReadEmlMessage(EmlMessage& message, uint64_t handle, PstFilterData& filterData,
                      const AttachmentRequest* request) {
  if (const Status read = ReadWholeFile(handle, message); !read.ok()) return read;
  const Status parsed = ParseEmlHeaders(message, FindTopHeaderLimit(message.file()));
  if (!parsed.ok()) return parsed;
  if (!HasFieldsOfAMail(message)) return StatusNotSupported;
  return WalkMessage(message, filterData, request);
}

}  // namespace tarn
