// StorageCopy.h - a storage with all that is in it, as a compound file of its own.
#ifndef TARN_ARCHIVE_STORAGECOPY_H
#define TARN_ARCHIVE_STORAGECOPY_H

#include <memory>

#include "archive/msg/StorageFile.h"

namespace tarn::archive::msg {

// The same bytes for the same storage. Names, class ids and times stay as they are. Memory holds
// the directory and the tables of the copy, and none of its streams; a stream that cannot be read
// ends the copy with its trouble. The file outlives the source.
Outcome<std::unique_ptr<ByteSource>> CopyStorage(StorageFile& file, EntryNumber storage);

}  // namespace tarn::archive::msg

#endif
