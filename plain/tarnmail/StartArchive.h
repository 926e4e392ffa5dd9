// StartArchive.h - the archive commands, which are programs of their own. One folder a system
// implements it.
#ifndef TARN_TARNMAIL_STARTARCHIVE_H
#define TARN_TARNMAIL_STARTARCHIVE_H

#include <string>
#include <vector>

namespace tarn::host {

// Becomes the program of the first word, which is the command, with all that follows it. Throws
// Failure (Broken) where it is not installed, and on Windows.
[[noreturn]] void StartArchive(const std::vector<std::string>& words);

}  // namespace tarn::host

#endif
