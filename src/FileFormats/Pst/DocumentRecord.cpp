#include "FileFormats/Pst/DocumentRecord.h"

#include <new>

#include "Common/ApiUtils.h"
#include "Common/FilterData.h"
#include "FileFormats/Pst/Frame.h"
#include "Platform/Directories.h"

namespace tarn {

void DestroyFilterData(PstFilterData* record) {
  if (record->signature != kFilterDataSignature) return;

  // By the path, not by the sibling's format: a sibling may have changed that, or refused.
  if (record->tempHtmlPath[0] != u'\0') KernelDeleteFile(record->tempHtmlPath);
  for (char*& path : record->inlineFiles.elements()) {
    const KernelBlock<char> image(std::exchange(path, nullptr));
    if (image && record->useTempFile) KernelDeleteFileUtf8(image.get());
  }
  if (record->useTempFile && record->tempDirectory[0] != u'\0') {
    platform::RemoveEmptyDirectory(record->tempDirectory);
  }
  KernelUntrackObject(KERNEL_TRACK_OBJECT, record, TARN_HERE);
  delete record;
}

Status FreeFilterData(void* data, int32_t value) {
  if (data == nullptr) return StatusBadArgument;
  uint32_t signature;
  std::memcpy(&signature, data, sizeof signature);
  if (value == 0 && signature == kFilterDataSignature) {
    DestroyFilterData(static_cast<PstFilterData*>(data));
  }
  return StatusOk;
}

Status RecordHolder::make() {
  // cppcheck-suppress publicAllocationError ; called once, of a holder of none
  record_ = new (std::nothrow) PstFilterData;
  if (record_ == nullptr) return StatusOutOfMemory;
  KernelTrackObject(KERNEL_TRACK_OBJECT, record_, TARN_HERE);
  owned_ = true;
  record_->useTempFile = KernelIoModeGet() != KERNEL_IO_IN_MEMORY;
  return StatusOk;
}

Status WriteDocumentToTemp(PstFilterData& record) {
  const char16_t* const directory =
      record.tempDirectory[0] != u'\0' ? record.tempDirectory : nullptr;
  const int32_t named =
      KernelTempFileName(directory, record.tempHtmlPath, kPathCapacity, 1, u"pst", u"html");
  if (named != StatusOk) {
    record.tempHtmlPath[0] = u'\0';
    return Status::FromCode(named);
  }

  TrackedBuffer<char>& document = record.document;
  document.setLength(document.view().find_last_not_of('\0') + 1);  // of NULs alone: npos + 1 is 0

  const FileGuard file(FileGuard::Raw, KernelRawFileCreate(record.tempHtmlPath, 0));
  if (!file.isOpen()) return Status::FromCode(KernelMapLastError(StatusCreateFailed));
  if (KernelRawFileWrite(file.handle(), document.data(), document.length(), 0) !=
      document.length()) {
    return Status::FromCode(KernelMapLastError(StatusWriteFailed));
  }
  return StatusOk;
}

bool StoreRecord(FilterDataSlot& slot, PstFilterData* record) {
  if (slot.data == record) return true;
  if (slot.data == nullptr) {
    slot.data = record;
    slot.dataSize = 0;
    slot.dataFormat = slot.defaultFormat;
    return true;
  }
  if (!EnsureFilterDataList(&slot, 1).ok()) return false;
  // Room for one is no list yet: a slot that holds another single item refuses the record.
  FilterDataList* const list = SlotList(&slot);
  if (list == nullptr) return false;
  FilterDataEntry& entry = list->entries[0];
  if (entry.data != nullptr && entry.data != record) return false;
  entry = {record, 0, slot.defaultFormat, 0};
  if (list->count < 1) list->count = 1;
  return true;
}

}  // namespace tarn
