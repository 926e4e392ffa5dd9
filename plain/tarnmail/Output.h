// Output.h - where the bytes of a command go: whole, or not at all.
#ifndef TARN_TARNMAIL_OUTPUT_H
#define TARN_TARNMAIL_OUTPUT_H

#include <optional>
#include <string>
#include <string_view>

namespace tarn::host {

// Exactly the bytes; a console of Windows shows them as text. Throws Failure (Failed) when they
// could not all be written.
void WriteToStandardOutput(std::string_view bytes);

// Writes the bytes to standard output without a path and for "-", else to that file. A file appears
// under its name when it is complete, in place of one that was there and with its permissions; a
// link stays, and it is the file that it leads to that is made or replaced. Devices and pipes are
// written to as they are, and a console of Windows shows the bytes as the text that they are in
// UTF-8. Throws Failure: Usage when the place cannot be written to, is for reading alone or is
// `source` itself, Failed when a write fails; then nothing has changed.
void WriteOutput(const std::optional<std::string>& path, const std::string& source,
                 std::string_view bytes);

}  // namespace tarn::host

#endif
