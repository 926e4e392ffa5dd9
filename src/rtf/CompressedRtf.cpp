// Unpacking goes into a block of its own, which becomes the body only when it is whole.
#include "rtf/CompressedRtf.h"

#include <algorithm>
#include <cstring>
#include <span>

#include "Common/ByteSearch.h"
#include "Common/Crc32.h"
#include "rtf/HtmlPasses.h"
#include "rtf/LzfuUnpack.h"
#include "rtf/RtfToHtml.h"

namespace tarn {
namespace {

constexpr std::string_view kFrom = "\\from";
constexpr std::string_view kHtml = "html";

// A raw size beyond the data, counted without a sign, means all of it; so do those below -16, but
// -2 to -16 stay the enormous lengths that they are.
int32_t TakeStored(SizedBytes& body, std::string_view contents, int32_t rawSize) {
  body.length = 0;
  auto length = static_cast<uint64_t>(static_cast<int64_t>(rawSize));
  if (length + kCompressedRtfHeaderSize >= contents.size() + kCompressedRtfHeaderSize) {
    length = contents.size();
  }
  if (length == kNulTerminated) {
    length = std::min(contents.find('\0'), contents.size());
  } else if (length > contents.size()) {
    return StatusOutOfMemory;
  }
  return AppendTerminated(body, contents.data(), length);
}

int32_t TakePacked(SizedBytes& body, std::span<const unsigned char> packed, int32_t rawSize) {
  if (rawSize < 0) return StatusNotSupported;
  const auto size = static_cast<uint64_t>(rawSize);
  if (size > LongestUnpackedText(packed.size())) return StatusNotSupported;

  const uint64_t end = kLzfuFixedSize + size;
  auto block = AllocateBlock<unsigned char>(end + 1, TARN_HERE);
  if (!block) return StatusOutOfMemory;
  std::memcpy(block.get(), kLzfuFixedText.data(), kLzfuFixedSize);
  if (UnpackLzfu(packed, {block.get(), end + 1}, end) == 0) return StatusNotSupported;

  std::memmove(block.get(), block.get() + kLzfuFixedSize, size);
  block[size] = '\0';
  const bool endsWithNul = size != 0 && block[size - 1] == '\0';
  body.release();
  body.data = reinterpret_cast<char*>(block.take());
  body.length = endsWithNul ? size : size + 1;
  return StatusOk;
}

// Only the first "\from" counts.
bool WrapsHtml(const SizedBytes& body) {
  const char* const end = body.data + body.length;
  const char* const from = FindBytes(body.data, end, kFrom);
  return from != nullptr && StartsWith(from + kFrom.size(), end, kHtml);
}

}  // namespace

int32_t DecodeCompressedRtf(char* source, MailMessage& message, uint64_t sourceLength) {
  if (source == nullptr) return StatusNotSupported;
  const KernelBlock<char> block(source);
  if (sourceLength < kCompressedRtfHeaderSize) return StatusNotSupported;

  const std::span<const unsigned char> all(reinterpret_cast<unsigned char*>(source), sourceLength);
  const CompressedRtfHeader header = ReadCompressedRtfHeader(all);
  if (header.compressedSize != static_cast<uint32_t>(sourceLength - 4)) return StatusNotSupported;
  const auto packed = all.subspan(kCompressedRtfHeaderSize);

  int32_t status = StatusNotSupported;
  if (header.magic == kMagicStored) {
    const std::string_view contents(source + kCompressedRtfHeaderSize, packed.size());
    status = TakeStored(message.body, contents, header.rawSize);
  } else if (header.magic == kMagicPacked && Crc32(packed.data(), packed.size()) == header.crc) {
    status = TakePacked(message.body, packed, header.rawSize);
  }
  if (status != StatusOk || !WrapsHtml(message.body)) return status;

  // A text that cannot be turned into HTML stays RTF, and the passes run over that.
  RtfToHtml(message.body);
  ShortenConditionalComments(message.body);
  CutLongValues(message.body);
  return StatusOk;
}

}  // namespace tarn
