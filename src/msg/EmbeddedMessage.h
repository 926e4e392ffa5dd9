// EmbeddedMessage.h - makes an MSG file of its own out of a message embedded in another one
// (MS-OXMSG).
//
// The file gets the parent's map of named properties and what the embedded storage holds, moved up
// to the root; the header of its properties grows from the 24 bytes of an embedded message to the
// 32 of a message of its own. Empty storages do not come along.
#ifndef TARN_MSG_EMBEDDEDMESSAGE_H
#define TARN_MSG_EMBEDDEDMESSAGE_H

#include <cstdint>
#include <string_view>

#include "Internal/Tarnclasses_.h"
#include "compound/CompoundFile.h"

namespace tarn {

inline constexpr Status kNothingToCopy = StatusDone;

// Writes the file for the storage at `path` into the buffer. Header, tables and directory are
// written only when the last entry of the storage's listing is a stream; else the bytes hold the
// streams and nothing that leads to them, and hosts have always got them so.
//
// On failure the buffer may hold a block.
//   StatusOk
//   kNothingToCopy      there is no such storage, or nothing in it
//   StatusOutOfMemory   also for storages nested too deep, for a stream larger than the file and
//                       for a directory that leads to more than the file holds
//   StatusWriteFailed   a stream could not be written whole
//   StatusReadFailed    a stream could not be read whole
//   StatusCreateFailed  there is no file to write to
//   others              of KernelMemFileOpen
Status ExportEmbeddedMessage(const CompoundStorage& source, std::string_view path,
                             TrackedBuffer<char>& data);

}  // namespace tarn

#endif
