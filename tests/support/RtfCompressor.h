// RtfCompressor.h - writes compressed RTF (MS-OXRTFCP), on its own tables and checksum.
//
//   PackRtf("{\\rtf1 Hello}")             "LZFu", as mail programs write it
//   StoreRtf("{\\rtf1 Hello}")            "MELA", with the customary CRC of 0
//
//   LzfuTokens tokens;                    token by token, well-formed or not
//   tokens.literals("ab").reference(214, 16).endMarker();
//   WriteCompressedRtf({.rawSize = 18}, tokens.bytes());
#ifndef TARN_TESTS_SUPPORT_RTFCOMPRESSOR_H
#define TARN_TESTS_SUPPORT_RTFCOMPRESSOR_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarn::test {

inline constexpr uint32_t kLzfuMagic = 0x75465A4C;
inline constexpr uint32_t kMelaMagic = 0x414C454D;

// The text that references can go to from the first byte on, 207 bytes. Before "\par" there is
// line feed, carriage return.
std::string_view LzfuStartText();

// The checksum of the format, bit by bit.
uint32_t LzfuChecksum(std::string_view bytes);

// The groups of packed contents.
class LzfuTokens {
 public:
  LzfuTokens& literals(std::string_view bytes);
  // `offset` 0 to 4095, `length` 2 to 17. What has been written so far counts the position on.
  LzfuTokens& reference(uint32_t offset, uint32_t length);
  // A reference to `distance` bytes back, 1 to 4096.
  LzfuTokens& back(uint32_t distance, uint32_t length);
  // The reference to the write position with which published streams end.
  LzfuTokens& endMarker();

  const std::string& bytes() const { return bytes_; }

 private:
  void begin(bool isReference);

  std::string bytes_;
  size_t control_ = 0;  // place of the group's control byte
  uint32_t tokens_ = 0;
  uint32_t position_ = 207;
};

// What a header says; what is left out is written as the contents have it.
struct CompressedRtfFields {
  std::optional<uint32_t> compressedSize = {};
  uint32_t rawSize = 0;
  uint32_t magic = kLzfuMagic;
  std::optional<uint32_t> crc = {};
};

std::string WriteCompressedRtf(const CompressedRtfFields& fields, std::string_view contents);

// The text packed with the longest references that a search of bounded depth finds, and ended by
// the end marker.
std::string PackRtf(std::string_view text);

enum class StoredCrc { Zero, OfContents };

std::string StoreRtf(std::string_view text, StoredCrc crc = StoredCrc::Zero);

}  // namespace tarn::test

#endif
