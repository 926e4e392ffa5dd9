// WriteAll.h - writes to a handle.
#ifndef TARN_CONSOLE_WIN32_WRITEALL_H
#define TARN_CONSOLE_WIN32_WRITEALL_H

#include <string_view>
#include <system_error>

namespace tarn::host {

// All bytes, however many calls that takes; to a console the text that they are in UTF-8. `handle`
// is a HANDLE. No bytes are no call.
std::error_code WriteAll(void* handle, std::string_view bytes);

}  // namespace tarn::host

#endif
