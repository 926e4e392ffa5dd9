// The six names that leave the library.

#include "FileFormats/Pst/Frame.h"
#include "Tarnbase/Kernel.h"

extern "C" {

int32_t fltInfo(FilterInfoContext* context) { return tarn::FilterInfo(context).code(); }

int32_t fltLoad(FilterLoadContext* context) { return tarn::FilterLoad(context).code(); }

int32_t fltFreeData(void* data, int32_t value) { return tarn::FreeFilterData(data, value).code(); }

int32_t fltGetAttachmentInfo(GetAttachmentInfoContext* context) {
  return tarn::GetAttachmentInfo(context).code();
}

int32_t fltExtractAttachment(ExtractAttachmentContext* context) {
  return tarn::ExtractAttachment(context).code();
}

// The first argument is the loader's place for the address that the kernel gets instead.
int64_t TARN_Load(uint64_t, uint64_t b, uint64_t c, uint64_t d) {
  return KernelLoaderEntry(reinterpret_cast<void*>(&TARN_Load), b, c, d);
}

}  // extern "C"
