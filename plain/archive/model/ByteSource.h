// ByteSource.h - bytes that are read once, from the first to the last.
#ifndef TARN_ARCHIVE_BYTESOURCE_H
#define TARN_ARCHIVE_BYTESOURCE_H

#include <cstddef>
#include <memory>
#include <span>
#include <string>

#include "archive/model/Trouble.h"

namespace tarn::archive {

// Lives no longer than the item that it comes from.
class ByteSource {
 public:
  ByteSource() = default;
  ByteSource(const ByteSource&) = delete;
  ByteSource& operator=(const ByteSource&) = delete;
  virtual ~ByteSource() = default;

  // Fills the buffer from its start and tells how far; 0 is the end. After a trouble there is no
  // more to read: what came before it is the part that could be had.
  virtual Outcome<size_t> read(std::span<char> buffer) = 0;
};

// Bytes that are in memory.
std::unique_ptr<ByteSource> BytesOf(std::string bytes);

// All bytes of a source. TooLarge beyond the limit, without reading on.
Outcome<std::string> ReadAll(ByteSource& source, size_t limit);

}  // namespace tarn::archive

#endif
