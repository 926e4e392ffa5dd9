#include "archive/text/UnpackRtf.h"

#include <cstdint>
#include <span>

#include "Common/Crc32.h"
#include "rtf/LzfuUnpack.h"

namespace tarn::archive {
namespace {

// Of the header, what its first field counts: sizes, magic and checksum but that field itself.
constexpr uint64_t kCountedHeader = kCompressedRtfHeaderSize - sizeof(uint32_t);

// As published, with the carriage return before the line feed; the filter has its own.
std::string StartOfBlock() {
  std::string text(kLzfuFixedText);
  text.replace(text.find("\n\r"), 2, "\r\n");
  return text;
}

Trouble Damage(const char* reason) { return {TroubleKind::Damaged, reason}; }

std::span<const unsigned char> BytesIn(std::string_view text) {
  return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

std::string WithoutNulsAtEnd(std::string text) {
  text.resize(text.find_last_not_of('\0') + 1);
  return text;
}

Outcome<std::string> TakeStored(std::string_view contents, uint64_t rawSize) {
  if (rawSize > contents.size()) return Damage("the stored RTF text is cut off");
  return WithoutNulsAtEnd(std::string(contents.substr(0, rawSize)));
}

Outcome<std::string> TakePacked(std::string_view contents, uint64_t rawSize) {
  if (rawSize > LongestUnpackedText(contents.size())) {
    return Damage("the compressed RTF text is cut off");
  }
  // The last reference may go beyond the end.
  std::string block = StartOfBlock();
  block.resize(kLzfuFixedSize + rawSize + kLzfuLongestToken);
  const std::span<unsigned char> room(reinterpret_cast<unsigned char*>(block.data()), block.size());
  if (UnpackLzfu(BytesIn(contents), room, kLzfuFixedSize + rawSize) == 0) {
    return Damage("the compressed RTF text is damaged");
  }
  block.resize(kLzfuFixedSize + rawSize);
  block.erase(0, kLzfuFixedSize);
  return WithoutNulsAtEnd(std::move(block));
}

}  // namespace

Outcome<std::string> UnpackRtf(std::string_view packed, std::optional<Trouble>* doubt) {
  if (doubt != nullptr) doubt->reset();
  if (packed.size() < kCompressedRtfHeaderSize) {
    return Damage("the compressed RTF text has no header");
  }
  const CompressedRtfHeader header = ReadCompressedRtfHeader(BytesIn(packed));
  if (header.compressedSize < kCountedHeader || header.rawSize < 0) {
    return Damage("the sizes of the compressed RTF text are impossible");
  }
  const std::string_view contents =
      packed.substr(kCompressedRtfHeaderSize, header.compressedSize - kCountedHeader);
  const auto rawSize = static_cast<uint64_t>(header.rawSize);
  switch (header.magic) {
    case kMagicStored:
      return TakeStored(contents, rawSize);
    case kMagicPacked:
      break;
    default:
      return Damage("the RTF text is neither compressed nor stored in a known way");
  }
  Outcome<std::string> text = TakePacked(contents, rawSize);
  if (text && doubt != nullptr && header.crc != Crc32(contents.data(), contents.size())) {
    *doubt = Damage("the checksum of the compressed RTF text is wrong");
  }
  return text;
}

}  // namespace tarn::archive
