// SystemErrors.h - what the system says when it refuses. One folder a system implements it.
#ifndef TARN_CONSOLE_SYSTEMERRORS_H
#define TARN_CONSOLE_SYSTEMERRORS_H

#include <string>
#include <string_view>
#include <system_error>

namespace tarn::host {

// The meaning of an error of the calls of SystemFiles.h and StandardStreams.h, in UTF-8 and without
// a line end. The common ones have the same words on every system ("No such file or directory");
// the others are the system's own text, which may be in the language of the machine. `subject` is
// what such a text calls the file.
std::string ErrorText(const std::error_code& error, std::string_view subject = "the file");

}  // namespace tarn::host

#endif
