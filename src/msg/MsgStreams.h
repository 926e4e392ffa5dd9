// MsgStreams.h - the streams of an MSG file (PropertyStreams.h) as texts.
//
// Sizes count bytes. A storage where a stream is looked for counts as nothing. What gives a status
// throws nothing.
//
// In a sound file the streams lie apart, so all of them together are no larger than the file; in a
// damaged one thousands may name the same large block of bytes. What has been read of a file is
// therefore counted, and streams beyond a multiple of its size fail like those that memory cannot
// hold.
#ifndef TARN_MSG_MSGSTREAMS_H
#define TARN_MSG_MSGSTREAMS_H

#include <cstdint>
#include <optional>
#include <string_view>

#include "Internal/Tarnclasses_.h"
#include "compound/CompoundStream.h"

namespace tarn {

// There is no such stream.
inline constexpr Status kNoStream = StatusDone;

// Properties of a fixed size are records of 16 bytes after a header, whose size differs between a
// message and an attachment: type (2), id (2), flags (4), value (8).
inline constexpr uint64_t kPropertyRecordSize = 16;
inline constexpr uint16_t kPropertyInteger = 3;
inline constexpr uint16_t kPropertyTime = 64;

// Reads a stream from its position to its end into a new block of the target, with two zero bytes
// after it that the length does not count; the length is that of the directory, whatever was there
// to be read. Null gives a block without a text.
//   StatusOk
//   StatusOutOfMemory  also for a stream larger than its file, and when too much of the file has
//                      been read; the target is as it was
//   StatusReadFailed   a seek failed
Status ReadWholeStream(CompoundStream* stream, SizedBytes& target);

// Puts a stream into the target.
//   StatusOk
//   kNoStream          the target is as it was
//   StatusOutOfMemory  likewise; the target is absent
//   StatusReadFailed
Status ReadMsgStream(const CompoundStorage& storage, std::string_view name, SizedBytes& target);

// Puts a text property into the target as UTF-8: from UTF-16 ("001F"), with a NUL that the length
// counts; else the bytes of "001E" or "0102" as they are. A missing property is an empty text with
// a block. Names of 100 bytes and more are missing.
//   StatusOk
//   StatusOutOfMemory  the target is no text that was not there before
//   StatusReadFailed
Status ReadMsgTextProperty(const CompoundStorage& storage, std::string_view name,
                           SizedBytes& target);

// The value of the first record of that type and id, from offset `start` of a properties stream
// on.
std::optional<uint64_t> FindPropertyRecord(std::string_view properties, uint64_t start,
                                           uint16_t type, uint16_t id);

}  // namespace tarn

#endif
