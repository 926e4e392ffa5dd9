// DocumentCalls.h - the part of AllCalls.h that asks for documents: one host with one open file.
#ifndef TARN_TESTS_SUPPORT_ROAD_DOCUMENTCALLS_H
#define TARN_TESTS_SUPPORT_ROAD_DOCUMENTCALLS_H

#include <optional>

#include "TarnPst.h"
#include "support/road/AllCalls.h"
#include "support/road/Siblings.h"

namespace tarn::test {

class DocumentCalls {
 public:
  DocumentCalls(const std::filesystem::path& file, const AllCallsOptions& options,
                const TakeAnswer& take);
  DocumentCalls(const DocumentCalls&) = delete;
  DocumentCalls& operator=(const DocumentCalls&) = delete;
  ~DocumentCalls();

  void run();
  // One fltInfo; none when it fails. 1 for a file that is no store.
  std::optional<int32_t> messageCount();

 private:
  enum class UseSlot { Yes, No };

  void fillRecords();
  int32_t info(const char* name, UseSlot useSlot);
  void load(const char* name, UseSlot useSlot);
  void free(const char* name, int32_t value);
  void* slotRecord() const;
  void addSlot(Answer& answer) const;
  void forgetSlot();

  const AllCallsOptions& options_;
  const TakeAnswer& take_;
  const std::u16string path_;
  uint64_t handle_;
  int32_t format_ = 0;  // of the last fltInfo that succeeded
  Siblings siblings_;
  FilterDataSlot slot_ = {};
  PatternedRecord<HostFileInfo> hostInfo_;
  PatternedRecord<HostLoadOptions> loadOptions_;
  PatternedRecord<FilterInfoContext> infoContext_;
  PatternedRecord<FilterLoadContext> loadContext_;
};

}  // namespace tarn::test

#endif
