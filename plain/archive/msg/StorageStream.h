// StorageStream.h - one stream of a StorageFile, from its first byte to its last.
#ifndef TARN_ARCHIVE_STORAGESTREAM_H
#define TARN_ARCHIVE_STORAGESTREAM_H

#include <cstdint>

#include "archive/msg/StorageFile.h"

namespace tarn::archive::msg {

// Gives what of the stream can be had, and then a trouble when that is less than it claims.
class StorageStream final : public ByteSource {
 public:
  // The file outlives this.
  StorageStream(StorageFile& file, EntryNumber stream);

  Outcome<size_t> read(std::span<char> buffer) override;

 private:
  // Where a place of the stream is in the file, and how many bytes lie there side by side; 0 where
  // its chain has ended.
  struct Extent {
    uint64_t position = 0;
    uint64_t size = 0;
  };
  Extent extentAt(uint64_t position, uint64_t most) const;
  Extent smallExtentAt(uint64_t position) const;

  StorageFile& file_;
  uint64_t size_;
  bool isBig_;
  uint64_t blockSize_;  // of the blocks that are chained
  uint64_t bigBlockSize_;
  BlockList blocks_;
  uint64_t position_ = 0;
};

}  // namespace tarn::archive::msg

#endif
