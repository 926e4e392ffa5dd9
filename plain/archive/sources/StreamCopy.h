// StreamCopy.h - what comes as a stream, as a file that can be read to and fro.
#ifndef TARN_ARCHIVE_STREAMCOPY_H
#define TARN_ARCHIVE_STREAMCOPY_H

#include <filesystem>

#include "archive/model/Trouble.h"
#include "console/PrivateFolder.h"

namespace tarn::archive {

// The copy, each time under a new name in the folder and gone with it. Unreadable where the stream
// cannot be read or the copy cannot be written. A folder that cannot be made throws host::Failure.
Outcome<std::filesystem::path> CopyStandardInput(host::PrivateFolder& folder);
Outcome<std::filesystem::path> CopyPipe(const std::filesystem::path& pipe,
                                        host::PrivateFolder& folder);

}  // namespace tarn::archive

#endif
