// StandardStreams.h - standard output and standard error. One folder a system implements them.
#ifndef TARN_CONSOLE_STANDARDSTREAMS_H
#define TARN_CONSOLE_STANDARDSTREAMS_H

#include <string_view>
#include <system_error>

namespace tarn::host {

// To be called before anything is opened: keeps the numbers of closed standard streams from being
// given to other files, and lets a broken pipe, and a file at the limit of the process, show as a
// failed write.
void PrepareStandardStreams();

// Whether standard output is a terminal: a console of Windows.
bool StandardOutputIsTerminal();

// Whether standard error is one.
bool StandardErrorIsTerminal();

// Exactly the bytes, whole or with the error, to a file, a pipe or a device. A console of Windows
// gets the text that they are in UTF-8, whatever its code page.
std::error_code WriteStandardOutput(std::string_view bytes);

// The same for standard error, whose failure nobody could be told.
void WriteStandardError(std::string_view bytes);

}  // namespace tarn::host

#endif
