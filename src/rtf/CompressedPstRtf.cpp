// Unpacking goes into a block of its own. It becomes the body, but for a body that has room enough:
// that one keeps its block, and what was after the unpacked bytes stays there.
#include <algorithm>
#include <cstring>
#include <istream>
#include <span>
#include <utility>

#include "Common/Crc32.h"
#include "rtf/CompressedRtf.h"
#include "rtf/LzfuUnpack.h"

namespace tarn {
namespace {

using Bytes = std::span<const unsigned char>;

// All bytes before the read position. StatusOk, StatusNotSupported or StatusOutOfMemory.
Status ReadFromStart(std::istream& stream, KernelBlock<unsigned char>& block, uint64_t& length) {
  constexpr std::streamoff kLeast = kCompressedRtfHeaderSize;
  const std::streamoff position = stream.tellg();
  if (position < kLeast) return StatusNotSupported;
  length = static_cast<uint64_t>(position);
  block = AllocateBlock<unsigned char>(length, TARN_HERE);
  if (!block) return StatusOutOfMemory;
  stream.seekg(0);
  stream.read(reinterpret_cast<char*>(block.get()), position);
  return stream.gcount() == position ? StatusOk : StatusNotSupported;
}

Status TakeStored(SizedBytes& body, Bytes contents) {
  const std::string_view text(reinterpret_cast<const char*>(contents.data()), contents.size());
  body.clear();
  return body.append(text.substr(0, text.find('\0')));
}

// The last token has as much room after the text as the old body's block gives it.
Status TakePacked(SizedBytes& body, Bytes packed, int32_t rawSize) {
  const uint64_t end = kLzfuFixedSize + static_cast<uint64_t>(rawSize);
  const bool keepsBlock = body.length() >= end;
  const uint64_t spare = keepsBlock ? std::min(body.length() - end, kLzfuLongestToken) : 0;
  LzfuText text;
  const Status status = UnpackLzfuText(packed, rawSize, spare, text);
  if (!status.ok()) return status;

  if (keepsBlock) {
    std::memcpy(body.data(), text.block.get(), text.reached);
  } else {
    body.adopt(std::move(text.block), end);
  }
  std::memmove(body.data(), body.data() + kLzfuFixedSize, text.size);
  body.truncate(body.length() - kLzfuFixedSize);
  return StatusOk;
}

}  // namespace

Status DecodePstCompressedRtf(std::istream& stream, MessageList& messages, int32_t index) {
  KernelBlock<unsigned char> block;
  uint64_t length = 0;
  if (const Status status = ReadFromStart(stream, block, length); !status.ok()) return status;

  const Bytes all(block.get(), length);
  const CompressedRtfHeader header = ReadCompressedRtfHeader(all);
  const Bytes contents = all.subspan(kCompressedRtfHeaderSize);
  if (header.compressedSize != length - 4) return StatusNotSupported;
  if (header.crc != Crc32(contents.data(), contents.size())) return StatusNotSupported;

  SizedBytes& body = messages.records[index].body;
  if (header.magic == kMagicStored) return TakeStored(body, contents);
  if (header.magic == kMagicPacked) return TakePacked(body, contents, header.rawSize);
  return StatusNotSupported;
}

}  // namespace tarn
