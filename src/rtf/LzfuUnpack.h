// LzfuUnpack.h - what both decoders of compressed RTF share: the header, the fixed text, and the
// unpacking loop (MS-OXRTFCP, 2.1 and 3.1).
//
// Output and dictionary are one block:
//
//   offset 0     the fixed text, to which the first references go
//          207   the unpacked text
//
// A reference names a place modulo 4096: the last such place before the write position. The
// marker that ends published streams, a reference to the write position itself, is none here, since
// the raw size of the header ends the loop.
#ifndef TARN_RTF_LZFUUNPACK_H
#define TARN_RTF_LZFUUNPACK_H

#include <cstdint>
#include <span>
#include <string_view>

#include "Internal/Tarnclasses_.h"

namespace tarn {

inline constexpr uint64_t kCompressedRtfHeaderSize = 16;
inline constexpr uint32_t kMagicPacked = 0x75465A4C;  // "LZFu"
inline constexpr uint32_t kMagicStored = 0x414C454D;  // "MELA"

struct CompressedRtfHeader {
  uint32_t compressedSize;
  int32_t rawSize;
  uint32_t magic;
  uint32_t crc;
};

// `source` holds a header at least.
CompressedRtfHeader ReadCompressedRtfHeader(std::span<const unsigned char> source);

// The line feed comes before the carriage return.
inline constexpr std::string_view kLzfuFixedText =
    "{\\rtf1\\ansi\\mac\\deff0\\deftab720{\\fonttbl;}{\\f0\\fnil \\froman \\fswiss \\fmodern "
    "\\fscript \\fdecor MS Sans SerifSymbolArialTimes New RomanCourier{\\colortbl\\red0\\green0"
    "\\blue0\n\r\\par \\pard\\plain\\f0\\fs20\\b\\i\\u\\tab\\tx";
inline constexpr uint64_t kLzfuFixedSize = 207;
static_assert(kLzfuFixedText.size() == kLzfuFixedSize);

// References reach back within the last so many bytes.
inline constexpr uint64_t kLzfuWindow = 4096;
// The tokens of a group, which one control byte tells of.
inline constexpr uint64_t kLzfuGroupTokens = 8;
// The most bytes that one token writes.
inline constexpr uint64_t kLzfuLongestToken = 17;

// The longest text that so many packed bytes can unpack to: eight references of 17 bytes from each
// group of 17, and what a shorter last group still gives.
uint64_t LongestUnpackedText(uint64_t packedSize);

// Unpacks into `block`, which begins with the fixed text, until the write position reaches `end`;
// the last reference may go beyond it, as far as the block does. Bytes of the block after the
// position are undefined afterwards. Returns the position, or 0 when the packed bytes end early or
// a reference leaves the block; the block's contents are then undefined.
uint64_t UnpackLzfu(std::span<const unsigned char> packed, std::span<unsigned char> block,
                    uint64_t end);

struct LzfuText {
  KernelBlock<char> block;  // the fixed text, then the text
  uint64_t size = 0;        // of the text
  uint64_t reached = 0;     // the position after the last token
};

// Unpacks a text of `rawSize` bytes into a block of its own, with room for `spare` bytes after it.
// Returns
//   StatusOk             `text` is set;
//   StatusNotSupported   for damage, and, before anything is allocated, for a raw size that the
//                        packed data cannot give;
//   StatusOutOfMemory    without memory.
Status UnpackLzfuText(std::span<const unsigned char> packed, int32_t rawSize, uint64_t spare,
                      LzfuText& text);

}  // namespace tarn

#endif
