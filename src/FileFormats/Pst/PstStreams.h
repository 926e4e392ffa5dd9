// PstStreams.h - a property's stream as one block. Sizes count bytes; what the store throws passes.
#ifndef TARN_FILEFORMATS_PST_PSTSTREAMS_H
#define TARN_FILEFORMATS_PST_PSTSTREAMS_H

#include <istream>

#include "pststore/Errors.h"

namespace tarn {

// The size of a stream, which is at its end afterwards.
inline uint64_t SizeByEnd(std::istream& stream) {
  stream.seekg(0, std::ios::end);
  return static_cast<uint64_t>(static_cast<std::streamoff>(stream.tellg()));
}

// Reads the whole stream, `size` bytes, from its start. A stream that gives less throws.
inline void ReadFromStart(std::istream& stream, char* destination, uint64_t size) {
  stream.seekg(0, std::ios::beg);
  if (size == 0) return;
  stream.read(destination, static_cast<std::streamsize>(size));
  if (static_cast<uint64_t>(stream.gcount()) != size) {
    throw pststore::database_corrupt("a stream is shorter than its size");
  }
}

}  // namespace tarn

#endif
