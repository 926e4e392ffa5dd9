// StorageLayout.h - where everything is in the compound file that a storage becomes (MS-CFB).
//
//   header | FAT | DIFAT | directory | mini FAT | mini stream | big streams
//
// Version 3, blocks of 512 bytes, small blocks of 64; nothing is free.
#ifndef TARN_ARCHIVE_STORAGELAYOUT_H
#define TARN_ARCHIVE_STORAGELAYOUT_H

#include <cstddef>
#include <string>
#include <vector>

#include "archive/msg/StorageFile.h"

namespace tarn::archive::msg {

struct CopiedStream {
  EntryNumber entry = 0;
  size_t padding = 0;  // zeros after its bytes
};

struct StorageLayout {
  std::string head;                  // all before the mini stream
  std::vector<CopiedStream> pieces;  // of the mini stream and then of the big blocks
};

// Damaged for a directory that cannot be read, and for streams that claim more than the file;
// TooLarge for what version 3 cannot hold.
Outcome<StorageLayout> LayOutStorage(StorageFile& file, EntryNumber storage);

}  // namespace tarn::archive::msg

#endif
