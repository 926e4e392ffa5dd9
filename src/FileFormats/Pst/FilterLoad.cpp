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
int32_t ReadRecord(const FilterLoadContext& context, RecordHolder& record, int32_t& index) {
  FileGuard file(FileGuard::Read, KernelFileOpen(context.path, KERNEL_OPEN_READ, KERNEL_OPEN_MODE));
  if (!file.isOpen()) return StatusOpenFailed;
  index = MessageIndex(context.messageNumber);
  int32_t format = FormatNone;
  if (DetectFormat(file.handle(), format) != StatusOk) return StatusReadFailed;

  const int32_t made = record.make();
  if (made != StatusOk) return made;
  const bool textOnly = context.textOnly == 1;
  uint32_t kind = DocumentNone;
  const int32_t read = ReadMessageDocument(context.path, *record, format, index, kind, textOnly,
                                           file.handle(), nullptr);
  if (read != StatusOk) return read;

  record->siblingFormat = SiblingForKind(kind, textOnly);
  if (record->siblingFormat == SiblingHtml && record->useTempFile != 0) {
    const int32_t written = WriteDocumentToTemp(*record);
    if (written != StatusOk) {
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

int32_t FilterLoad(FilterLoadContext* context) {
  if (context == nullptr) return StatusBadArgument;

  // A record in the slot is shown whatever message and kind the context names.
  RecordHolder record;
  int32_t index = 0;
  PstFilterData* cached = nullptr;
  if (FindFilterData(context->slot, 0, &cached) == StatusOk) {
    record.borrow(cached);
  } else {
    const int32_t read = ReadRecord(*context, record, index);
    if (read != StatusOk) return read;
  }

  HostFileInfo info = {};
  if (context->info != nullptr) std::memcpy(&info, context->info, sizeof info);
  info.size = sizeof info;
  info.format = record->siblingFormat;
  info.flags &= ~kClearedInfoFlag;
  HostLoadOptions options = CopyOptions(context->options);
  PassSiblingData(context->slot, static_cast<int32_t>(static_cast<uint32_t>(index) + 1u), options);

  if (record->attachmentStatus != StatusOk && context->status == StatusOk) {
    context->status = record->attachmentStatus;
  }
  return GoesByTempFile(*record, record->siblingFormat)
             ? CallByName(*context, *record, options, info)
             : CallFromMemory(*context, *record, options, info);
}

}  // namespace tarn
