// LastError.h - the calling thread's last error.
#ifndef TARN_CONSOLE_WIN32_LASTERROR_H
#define TARN_CONSOLE_WIN32_LASTERROR_H

#include <system_error>

namespace tarn::host {

// Never "no error": for use after a call that has failed.
std::error_code LastError();

}  // namespace tarn::host

#endif
