// DocumentRecord.h - making, keeping and ending a document record (Internal/PstFilterData.h).
#ifndef TARN_FILEFORMATS_PST_DOCUMENTRECORD_H
#define TARN_FILEFORMATS_PST_DOCUMENTRECORD_H

#include "Internal/PstFilterData.h"

namespace tarn {

// Ends a record: deletes its HTML temp file, its images and their directory, and frees it. A record
// without the signature is left alone.
void DestroyFilterData(PstFilterData* record);

// The record of a call: its own, destroyed on every way out, or somebody else's.
class RecordHolder {
 public:
  RecordHolder() = default;
  RecordHolder(const RecordHolder&) = delete;
  RecordHolder& operator=(const RecordHolder&) = delete;
  ~RecordHolder() {
    if (owned_) DestroyFilterData(record_);
  }

  // Makes a record of the call's own, announced to the kernel, with the route (temp file or memory)
  // that the kernel's I/O mode allows. StatusOk or StatusOutOfMemory.
  Status make();
  // Uses the record of the host's slot.
  void borrow(PstFilterData* record) {
    record_ = record;
    owned_ = false;
  }
  // The record goes on living: the slot took it.
  void disown() { owned_ = false; }

  PstFilterData* get() const { return record_; }
  PstFilterData* operator->() const { return record_; }
  PstFilterData& operator*() const { return *record_; }

 private:
  PstFilterData* record_ = nullptr;
  bool owned_ = false;
};

// Writes the document, less all its trailing NULs (which its length loses for good), to a new HTML
// temp file beside the inline images if there are any. The file that tempHtmlPath names, written or
// not, is the record's to delete. StatusOk; the kernel's own failure, or StatusCreateFailed and
// StatusWriteFailed as it maps them.
Status WriteDocumentToTemp(PstFilterData& record);

// Leaves the record in the slot: directly when the slot is empty, else as entry 0 of its list.
// True when the slot holds it now.
bool StoreRecord(FilterDataSlot& slot, PstFilterData* record);

}  // namespace tarn

#endif
