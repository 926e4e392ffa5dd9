// The text conversions as the filter calls them.
#include "Faults.h"
#include "Tarnbase/Kernel.h"
#include "Utf8.h"

using namespace tarn::kernel;

int64_t KernelWideToUtf8(const char16_t* source, int64_t units, char* destination, int64_t bytes) {
  return FaultDue(PlainKernelFaultText) ? 0 : EncodeUtf8(source, units, destination, bytes);
}

int64_t KernelUtf8ToWide(const char* source, int64_t bytes, char16_t* destination, int64_t units) {
  return FaultDue(PlainKernelFaultText) ? 0 : DecodeUtf8(source, bytes, destination, units);
}
