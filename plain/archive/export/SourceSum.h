// SourceSum.h - what tells whether a source is still the same.
#ifndef TARN_ARCHIVE_SOURCESUM_H
#define TARN_ARCHIVE_SOURCESUM_H

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "archive/export/HashedFile.h"
#include "archive/sources/SourceKind.h"

namespace tarn::archive {

// Of a file that of its bytes. Of a Maildir that of the lines "SUM  PATH" with the path of each
// file below it, in byte order, as `sha256sum` writes them: temporary files left out. The word
// "unreadable" is the sum of a file that cannot be read, and lines of folders that cannot be read
// ("unreadable  PATH/") come last. `beat` is called after each piece.
Outcome<FileSum> SumOfSource(const std::filesystem::path& path, SourceKind kind,
                             const std::function<void()>& beat);

// The paths of its files below it, in byte order, without temporary ones.
Outcome<std::vector<std::string>> FilesOfMaildir(const std::filesystem::path& folder);

// What is another one after a change: size and time of a file, without reading; of a Maildir all
// its folders and files. Empty where the system does not tell.
std::string StampOfSource(const std::filesystem::path& path, SourceKind kind);

}  // namespace tarn::archive

#endif
