// Report.h - the end of a process whose caller broke the kernel's contract.
#ifndef TARN_KERNEL_REPORT_H
#define TARN_KERNEL_REPORT_H

#include <cstdint>

namespace tarn::kernel {

// Writes one line (operation, what is wrong, address, source location) to standard error and aborts
// the process. `file` may be null.
[[noreturn]] void AbortOnMisuse(const char* operation, const char* what, const void* address,
                                int32_t line, const char16_t* file);

}  // namespace tarn::kernel

#endif
