#include "msg/MsgStreams.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <optional>

#include "Common/FixedText.h"
#include "Common/LittleEndian.h"
#include "Platform/CodePages.h"

namespace tarn {
namespace {

// What a byte of a stream costs of the bytes that a file's reads may take: it is cleared, read and
// mostly converted.
constexpr uint64_t kCostOfAByte = 32;

// The name of a property's stream, or nothing for one that is too long.
using StreamName = FixedText<99>;
StreamName NameOf(std::string_view base, std::string_view type) {
  StreamName name;
  return name.append(base) && name.append(type) ? name : StreamName();
}

// Turns UTF-16 bytes into the target's UTF-8. An odd byte at the end is dropped. StatusOk, or
// StatusOutOfMemory, and then the target is as it was.
Status ConvertWide(std::string_view wide, SizedBytes& target) {
  const uint64_t units = wide.size() / sizeof(char16_t);
  KernelBlock<char16_t> source;
  if (units != 0) {
    source = AllocateBlock<char16_t>(units, TARN_HERE);
    if (!source) return StatusOutOfMemory;
    std::memcpy(source.get(), wide.data(), units * sizeof(char16_t));
  }
  const uint64_t old = target.length();
  const uint64_t room = std::max(old, 4 * wide.size() + 1);
  const auto write = [&](char* block) {
    std::memset(block + old, 0, room - old);
    if (units == 0) return uint64_t{0};
    const uint64_t most = std::min<uint64_t>(2 * wide.size() + 1, INT32_MAX);
    const uint64_t written =
        platform::Utf16ToBytes(platform::kCodePageUtf8, {source.get(), units}, {block, most}).size;
    if (written == 0 || block[written - 1] == '\0') return written;
    block[written] = '\0';
    return written + 1;
  };
  if (!target.refill(room, write)) return StatusOutOfMemory;
  // A long text gives back what its block has to spare: the room for a conversion is three times
  // what most texts take. A block that cannot be moved stays as it is.
  constexpr uint64_t kSpare = 65536;
  if (room - target.length() > kSpare) target.fitBlock(1);
  return StatusOk;
}

}  // namespace

Status ReadWholeStream(CompoundStream* stream, SizedBytes& target) try {
  const uint64_t length = stream != nullptr ? stream->size() : 0;
  if (stream != nullptr) {
    CompoundFile& file = *stream->file;
    if (length > file.size() || !file.spend(kCostOfAByte * length)) return StatusOutOfMemory;
  }
  KernelBlock<char> block = AllocateZeroBlock<char>(length + 2, TARN_HERE);
  if (!block) return StatusOutOfMemory;
  if (stream != nullptr) {
    auto* const bytes = reinterpret_cast<unsigned char*>(block.get());
    const uint64_t failedBefore = stream->file->failedSeeks();
    stream->position += StreamRead(*stream, stream->position, {bytes, length});
    if (stream->file->failedSeeks() != failedBefore) return StatusReadFailed;
  }
  target.adopt(std::move(block), length);
  return StatusOk;
} catch (const std::bad_alloc&) {
  return StatusOutOfMemory;
}

Status ReadMsgStream(const CompoundStorage& storage, std::string_view name,
                     SizedBytes& target) try {
  std::optional<CompoundStream> stream = storage.file->open(name);
  if (!stream) return kNoStream;
  target.release();
  return ReadWholeStream(&*stream, target);
} catch (const std::bad_alloc&) {
  return StatusOutOfMemory;
}

Status ReadMsgTextProperty(const CompoundStorage& storage, std::string_view name,
                           SizedBytes& target) {
  SizedBytes wide;
  const Status status = ReadMsgStream(storage, NameOf(name, "001F").view(), wide);
  if (status.failed()) return status;
  if (status.ok()) {
    if (wide.length() != 0) return ConvertWide(wide.view(), target);
    target.clear();
    return StatusOk;
  }
  for (const std::string_view type : {"001E", "0102"}) {
    const Status read = ReadMsgStream(storage, NameOf(name, type).view(), target);
    if (read != kNoStream) return read;
  }
  target.clear();
  return ConvertWide({}, target);
}

std::optional<uint64_t> FindPropertyRecord(std::string_view properties, uint64_t start,
                                           uint16_t type, uint16_t id) {
  for (uint64_t at = start; at + kPropertyRecordSize <= properties.size();
       at += kPropertyRecordSize) {
    const auto* const record = reinterpret_cast<const unsigned char*>(properties.data() + at);
    if (LoadLittleEndian<uint16_t>(record) != type) continue;
    if (LoadLittleEndian<uint16_t>(record + 2) != id) continue;
    return LoadLittleEndian<uint64_t>(record + 8);
  }
  return std::nullopt;
}

}  // namespace tarn
