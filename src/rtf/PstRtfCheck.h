// PstRtfCheck.h - what DecodePstCompressedRtf would answer, for those who do not want the text.
//
// The stream's bytes come in pieces of any size, and nothing of them is kept.
#ifndef TARN_RTF_PSTRTFCHECK_H
#define TARN_RTF_PSTRTFCHECK_H

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "rtf/LzfuCheck.h"
#include "rtf/LzfuUnpack.h"

namespace tarn {

class PstRtfCheck {
 public:
  // For a stream of `length` bytes and a record whose body has `bodyLength` bytes; 0 for none.
  PstRtfCheck(uint64_t length, uint64_t bodyLength) : length_(length), bodyLength_(bodyLength) {}

  // The next bytes of the stream.
  void take(std::span<const unsigned char> bytes);

  // Once all bytes have been taken: StatusOk, or StatusNotSupported for damaged data.
  Status status() const;

  // With StatusOk: the length that the record's body would have.
  uint64_t bodyLength() const { return bodyLength_; }

 private:
  using Bytes = std::span<const unsigned char>;

  void begin();
  void takeContents(Bytes contents);

  const uint64_t length_;
  uint64_t bodyLength_;
  uint64_t taken_ = 0;
  std::array<unsigned char, kCompressedRtfHeaderSize> headerBytes_ = {};
  CompressedRtfHeader header_ = {};
  uint32_t crc_ = 0;
  std::optional<LzfuCheck> packed_;  // of packed data that may unpack
  bool hasEnded_ = false;            // stored text, at its first NUL
};

}  // namespace tarn

#endif
