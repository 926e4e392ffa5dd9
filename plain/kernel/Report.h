// Report.h - what the kernel writes to standard error: the end of a process whose caller broke the
// contract, and leaks for those who asked. `file` may be null everywhere.
#ifndef TARN_KERNEL_REPORT_H
#define TARN_KERNEL_REPORT_H

#include <cstdint>

namespace tarn::kernel {

// Writes one line (operation, what is wrong, address, source location) and aborts the process.
[[noreturn]] void AbortOnMisuse(const char* operation, const char* what, const void* address,
                                int32_t line, const char16_t* file);

// Writes one line about a register that somebody has in use, and that is not listed therefore.
void ReportUnlisted(const char* what);

// Writes one line about something that is still alive.
void ReportLeak(const char* what, const void* address, int32_t line, const char16_t* file);

}  // namespace tarn::kernel

#endif
