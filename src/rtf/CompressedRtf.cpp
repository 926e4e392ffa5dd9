// Unpacking goes into a block of its own, which becomes the body only when it is whole.
#include "rtf/CompressedRtf.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <utility>

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
Status TakeStored(SizedBytes& body, std::string_view contents, int32_t rawSize) {
  body.clear();
  auto length = static_cast<uint64_t>(static_cast<int64_t>(rawSize));
  if (length + kCompressedRtfHeaderSize >= contents.size() + kCompressedRtfHeaderSize) {
    length = contents.size();
  }
  if (length == kNulTerminated) {
    length = std::min(contents.find('\0'), contents.size());
  } else if (length > contents.size()) {
    return StatusOutOfMemory;
  }
  return body.append(contents.substr(0, length));
}

// One byte is spare for the terminator.
Status TakePacked(SizedBytes& body, std::span<const unsigned char> packed, int32_t rawSize) {
  LzfuText text;
  if (const Status status = UnpackLzfuText(packed, rawSize, 1, text); !status.ok()) return status;

  std::memmove(text.block.get(), text.block.get() + kLzfuFixedSize, text.size);
  text.block[text.size] = '\0';
  const bool endsWithNul = text.size != 0 && text.block[text.size - 1] == '\0';
  body.adopt(std::move(text.block), endsWithNul ? text.size : text.size + 1);
  return StatusOk;
}

Status TakeSource(SizedBytes& body, std::string_view source) {
  if (source.size() < kCompressedRtfHeaderSize) return StatusNotSupported;
  const std::span<const unsigned char> all(reinterpret_cast<const unsigned char*>(source.data()),
                                           source.size());
  const CompressedRtfHeader header = ReadCompressedRtfHeader(all);
  if (header.compressedSize != static_cast<uint32_t>(source.size() - 4)) return StatusNotSupported;

  const auto packed = all.subspan(kCompressedRtfHeaderSize);
  switch (header.magic) {
    case kMagicStored:
      return TakeStored(body, source.substr(kCompressedRtfHeaderSize), header.rawSize);
    case kMagicPacked:
      if (header.crc != Crc32(packed.data(), packed.size())) return StatusNotSupported;
      return TakePacked(body, packed, header.rawSize);
    default:
      return StatusNotSupported;
  }
}

// Only the first "\from" counts.
bool WrapsHtml(std::string_view body) {
  const size_t from = FindBytes(body, kFrom);
  return from != std::string_view::npos && body.substr(from + kFrom.size()).starts_with(kHtml);
}

}  // namespace

Status DecodeCompressedRtf(char* source, MailMessage& message, uint64_t sourceLength) {
  if (source == nullptr) return StatusNotSupported;
  KernelBlock<char> block(source);
  const Status status = TakeSource(message.body, std::string_view(source, sourceLength));
  block.reset();
  if (!status.ok() || !WrapsHtml(message.body.view())) return status;

  // A text that cannot be turned into HTML stays RTF, and the passes run over that.
  RtfToHtml(message.body).ignore();
  ShortenConditionalComments(message.body);
  CutLongValues(message.body);
  return StatusOk;
}

}  // namespace tarn
