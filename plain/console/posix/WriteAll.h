// WriteAll.h - writes to a descriptor.
#ifndef TARN_CONSOLE_POSIX_WRITEALL_H
#define TARN_CONSOLE_POSIX_WRITEALL_H

#include <string_view>
#include <system_error>

namespace tarn::host {

// The value of errno, for use after a call that has failed.
std::error_code LastError();

// All bytes, however many calls that takes. No bytes are no call.
std::error_code WriteAll(int descriptor, std::string_view bytes);

}  // namespace tarn::host

#endif
