// FilterLibrary.h - the filter, loaded at run time and driven only through its six exports.
#ifndef TARN_TARNMAIL_FILTERLIBRARY_H
#define TARN_TARNMAIL_FILTERLIBRARY_H

#include <cstdint>
#include <string>

#include "DynamicLibrary.h"
#include "TarnPst.h"

namespace tarn::host {

// The calls of TarnPst.h, with the same arguments, results and ownership. An exception that leaves
// an export becomes a Failure (Failed) that names `file`.
class FilterLibrary {
 public:
  // Throws Failure (Broken) when the library is missing or lacks an export.
  FilterLibrary();

  int32_t info(const std::string& file, FilterInfoContext& context) const;
  int32_t load(const std::string& file, FilterLoadContext& context) const;
  int32_t attachmentInfo(const std::string& file, GetAttachmentInfoContext& context) const;
  int32_t extractAttachment(const std::string& file, ExtractAttachmentContext& context) const;
  // Never throws: an exception here is lost, and shows as things left in the kernel.
  void freeData(void* data) const noexcept;

 private:
  struct Exports {
    decltype(&fltInfo) info;
    decltype(&fltLoad) load;
    decltype(&fltFreeData) freeData;
    decltype(&fltGetAttachmentInfo) getAttachmentInfo;
    decltype(&fltExtractAttachment) extractAttachment;
    decltype(&TARN_Load) loadStub;
  };

  DynamicLibrary library_;
  Exports exports_;
};

}  // namespace tarn::host

#endif
