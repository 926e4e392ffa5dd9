// PstStreams.h - a property's stream as one block, and the size of a text before it is read. Sizes
// count bytes; what the store throws passes.
//
// Streams are read once: what has been read is in its block, and not in the store's memory as well.
#ifndef TARN_FILEFORMATS_PST_PSTSTREAMS_H
#define TARN_FILEFORMATS_PST_PSTSTREAMS_H

#include <istream>

#include "pststore/Errors.h"
#include "pststore/PropertyObject.h"

namespace tarn {

// The value of a property that exists, for reading it once.
inline pststore::hnid_stream_device OpenOnce(const pststore::const_property_object& properties,
                                             pststore::ushort id) {
  pststore::hnid_stream_device device = properties.open_prop_stream(id);
  device.read_once();
  return device;
}

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

// The size that a string property has once it is read; it is not read for that.
inline uint64_t TextBytes(const pststore::const_property_object& properties, pststore::ushort id) {
  const uint64_t stored = properties.size(id);
  const bool isEightBit = properties.get_prop_type(id) == pststore::prop_type_string;
  return isEightBit ? sizeof(char16_t) * stored : stored;
}

}  // namespace tarn

#endif
