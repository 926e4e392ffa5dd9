// fltLoad: a page of the document as a bitmap, drawn by the sibling.

#include "Common/ApiUtils.h"
#include "Common/FilterData.h"
#include "FileFormats/Pst/DetectFormat.h"
#include "FileFormats/Pst/DocumentRecord.h"
#include "FileFormats/Pst/Frame.h"
#include "FileFormats/Pst/IoScope.h"
#include "FileFormats/Pst/MessageDriver.h"
#include "FileFormats/Pst/SiblingCall.h"

namespace tarn {
namespace {

constexpr int32_t kBitmapBytes = 284;  // the host's bitmap record
constexpr int32_t kDepth = 24;
constexpr int32_t kChannelOrder = 1;
constexpr int32_t kLoadFlag = 32;
constexpr uint32_t kClearedInfoFlag = 0x4000;

// Reads the message into a record of the call's own.
Status ReadRecord(const FilterLoadContext& context, RecordHolder& record, int32_t& index) {
  FileGuard file(FileGuard::Read, KernelFileOpen(context.path, KERNEL_OPEN_READ, KERNEL_OPEN_MODE));
  if (!file.isOpen()) return StatusOpenFailed;
  TarnFormat format = FormatNone;
  if (!DetectFormat(file.handle(), format).ok()) return StatusReadFailed;

  const Status made = record.make();
  if (!made.ok()) return made;
  const DocumentRequest request = {
      context.path,          format,        MessageIndex(context.messageNumber),
      context.textOnly == 1, file.handle(), nullptr};
  DocumentResult result;
  const Status read = ReadMessageDocument(request, *record, result);
  if (!read.ok()) return read;

  index = result.index;
  record->siblingFormat = SiblingForKind(result.kind, request.textOnly);
  if (GoesByTempFile(*record, record->siblingFormat)) {
    const Status written = WriteDocumentToTemp(*record);
    if (!written.ok()) {
      // Relied upon as it is: file and record stay with the process.
      file.abandon();
      record.disown();
      return written;
    }
  }
  return StatusOk;
}

bool TargetIsDirect(void* target) {
  if (target == nullptr) return false;
  TargetKindFunction* table = nullptr;
  std::memcpy(&table, target, sizeof table);
  return table[3](target) == TARGET_KIND_DIRECT;
}

int32_t CallByName(const FilterLoadContext& context, PstFilterData& record,
                   HostLoadOptions& options, HostFileInfo& info) {
  FilterIoScope scope;
  scope.enter();
  if (TargetIsDirect(context.target)) {
    if (context.targetByName == nullptr) return StatusFailed;
    return context.targetByName(record.tempHtmlPath, context.opaque, &options, &info);
  }
  if (context.loadByName == nullptr) return StatusFailed;
  return context.loadByName(record.tempHtmlPath, context.bitmap, kBitmapBytes, kDepth,
                            kChannelOrder, kLoadFlag, context.callback, context.userValue, &options,
                            &info);
}

int32_t CallFromMemory(const FilterLoadContext& context, PstFilterData& record,
                       HostLoadOptions& options, HostFileInfo& info) {
  const TrackedBuffer<char>& document = record.document;
  if (TargetIsDirect(context.target)) {
    if (context.targetFromMemory == nullptr) return StatusFailed;
    return context.targetFromMemory(document.data(), context.opaque, document.length(), &options,
                                    &info);
  }
  if (context.loadFromMemory == nullptr) return StatusFailed;
  return context.loadFromMemory(document.data(), context.bitmap, kBitmapBytes, kDepth,
                                kChannelOrder, kLoadFlag, context.callback, context.userValue,
                                document.length(), &options, &info);
}

}  // namespace

Status FilterLoad(FilterLoadContext* context) {
  if (context == nullptr) return StatusBadArgument;

  // A record in the slot is shown whatever message and kind the context names.
  RecordHolder record;
  int32_t index = 0;
  PstFilterData* cached = nullptr;
  if (FindFilterData(context->slot, 0, &cached).ok()) {
    record.borrow(cached);
  } else {
    const Status read = ReadRecord(*context, record, index);
    if (!read.ok()) return read;
  }

  HostFileInfo info = {};
  if (context->info != nullptr) std::memcpy(&info, context->info, sizeof info);
  info.size = sizeof info;
  info.format = record->siblingFormat;
  info.flags &= ~kClearedInfoFlag;
  HostLoadOptions options = CopyOptions(context->options);
  PassSiblingData(context->slot, SiblingPosition(index), options);

  if (!record->attachmentStatus.ok() && context->status == StatusOk) {
    context->status = record->attachmentStatus.code();
  }
  return Status::FromCode(GoesByTempFile(*record, record->siblingFormat)
                              ? CallByName(*context, *record, options, info)
                              : CallFromMemory(*context, *record, options, info));
}

}  // namespace tarn
