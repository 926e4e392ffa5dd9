// CompressedRtf.h - unpacks compressed RTF (MS-OXRTFCP).
//
//   offset 0   compressed size   bytes after this field
//          4   raw size          of the text, signed
//          8   magic             "LZFu" packed, "MELA" stored
//         12   CRC               of all bytes from 16 on
//         16   contents          groups: a control byte, then 8 tokens from its bit 0 up;
//                                0: a literal byte, 1: two bytes, offset (12 bits), length - 2 (4)
//
// There are two decoders, one for each kind of mail file, and they differ where their comments say
// so. Whatever the data, neither leaves its buffers. Of packed data, a raw size beyond what the
// bytes can unpack to is damage, and nothing is allocated for it; so are a negative raw size,
// packed bytes that end early, and a reference that reads or writes outside of the block. The raw
// size of stored data is never damage. On failure the body is as it was, unless a
// function says otherwise.
#ifndef TARN_RTF_COMPRESSEDRTF_H
#define TARN_RTF_COMPRESSEDRTF_H

#include <cstdint>
#include <iosfwd>

#include "Internal/MailMessage.h"

namespace tarn {

// Unpacks a block into message.body and, when the RTF wraps HTML, turns it into HTML. Takes over
// `source`, which is freed on every way out. The body then ends with a NUL that its length counts
// (but see ShortenConditionalComments).
// Stored data is taken without a test of its CRC; its raw size is cut to the data, -1 ends the text
// at its first NUL, and -2 to -16 are sizes that no memory holds. Returns
//   StatusOk             the body is RTF or HTML;
//   StatusNotSupported   for damaged data;
//   StatusOutOfMemory    without memory; of stored data a body of length 0 is left.
Status DecodeCompressedRtf(char* source, MailMessage& message, uint64_t sourceLength);

// Unpacks a stream that is at its end into messages.records[index].body, as RTF in any case.
// Packed text gets no NUL after it. A body of at least raw size + 207 bytes keeps its block, and
// its length falls by 207 only: it then ends with stale bytes, of the unpacking and of the old
// body. The CRC of stored data is tested; its raw size is ignored, and the text ends at its first
// NUL, which the body's length counts. What the stream throws is let through. Returns
//   StatusOk             the body is RTF;
//   StatusNotSupported   for damaged data, and for a stream that gives less than its length;
//   StatusOutOfMemory    without memory; of stored data that could be read a body of length 0 is
//                        left.
Status DecodePstCompressedRtf(std::istream& stream, MessageList& messages, int32_t index);

}  // namespace tarn

#endif
