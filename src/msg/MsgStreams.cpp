#include "msg/MsgStreams.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <optional>

#include "Common/LittleEndian.h"
#include "Platform/CodePages.h"

namespace tarn {
namespace {

constexpr uint64_t kNameCapacity = 100;
constexpr uint64_t kTypeLength = 4;
// What a byte of a stream costs of the bytes that a file's reads may take: it is cleared, read and
// mostly converted.
constexpr uint64_t kCostOfAByte = 32;

// The name of a property's stream, in a buffer of a fixed size.
class StreamName {
 public:
  StreamName(std::string_view base, std::string_view type) {
    if (base.size() + kTypeLength >= kNameCapacity) return;
    base.copy(name_, base.size());
    type.copy(name_ + base.size(), type.size());
    length_ = base.size() + type.size();
  }

  // Empty for a name that does not fit.
  std::string_view get() const { return {name_, length_}; }

 private:
  char name_[kNameCapacity];
  uint64_t length_ = 0;
};

// Gives back what a long text's block has to spare: the room for a conversion is three times what
// most texts take. A block that cannot be moved stays as it is.
void TrimBlock(SizedBytes& text, uint64_t room) {
  constexpr uint64_t kSpare = 65536;
  if (room - text.length() <= kSpare) return;
  void* const block = KernelRealloc(text.data(), text.length() + 1, TARN_HERE);
  if (block != nullptr) text.setData(static_cast<char*>(block));
}

// Turns UTF-16 bytes into the target's UTF-8. An odd byte at the end is dropped.
int32_t ConvertWide(std::string_view wide, SizedBytes& target) {
  // First, so that a target that gets no text keeps its length.
  const uint64_t units = wide.size() / sizeof(char16_t);
  const KernelBlock<char16_t> source =
      units != 0 ? AllocateBlock<char16_t>(units, TARN_HERE) : KernelBlock<char16_t>();
  if (units != 0) {
    if (!source) return StatusOutOfMemory;
    std::memcpy(source.get(), wide.data(), units * sizeof(char16_t));
  }
  const uint64_t room = 4 * wide.size() + 1;
  if (target.data() == nullptr || target.length() < room) {
    const uint64_t old = target.data() != nullptr ? target.length() : 0;
    void* const block = KernelRealloc(target.data(), room, TARN_HERE);
    if (block == nullptr) return StatusOutOfMemory;
    target.setData(static_cast<char*>(block));
    std::memset(target.data() + old, 0, room - old);
    target.setLength(room);
  }
  int32_t written = 0;
  if (units != 0) {
    const uint64_t most = std::min<uint64_t>(2 * wide.size() + 1, INT32_MAX);
    written = platform::Utf16ToBytes(platform::kCodePageUtf8, {source.get(), units}, target.data(),
                                     static_cast<int32_t>(most), nullptr);
  }
  const uint64_t held = std::max(room, target.length());
  target.setLength(static_cast<uint64_t>(written));
  if (written != 0 && target.data()[written - 1] != '\0') {
    target.data()[written] = '\0';
    target.setLength(target.length() + 1);
  }
  TrimBlock(target, held);
  return StatusOk;
}

}  // namespace

int32_t ReadWholeStream(CompoundStream* stream, KernelBlock<char>& block, uint64_t& length) try {
  length = stream != nullptr ? stream->size() : 0;
  if (stream != nullptr) {
    CompoundFile& file = *stream->file;
    if (length > file.size() || !file.spend(kCostOfAByte * length)) return StatusOutOfMemory;
  }
  block = AllocateZeroBlock<char>(length + 2, TARN_HERE);
  if (!block) return StatusOutOfMemory;
  if (stream == nullptr) return StatusOk;
  auto* const bytes = reinterpret_cast<unsigned char*>(block.get());
  const uint64_t failedBefore = stream->file->failedSeeks();
  stream->position += StreamRead(*stream, stream->position, {bytes, length});
  return stream->file->failedSeeks() == failedBefore ? StatusOk : StatusReadFailed;
} catch (const std::bad_alloc&) {
  return StatusOutOfMemory;
}

int32_t ReadMsgStream(const CompoundStorage& storage, std::string_view name,
                      SizedBytes& target) try {
  std::optional<CompoundStream> stream = storage.file->open(name);
  if (!stream) return kNoStream;
  target.release();
  target.setLength(0);
  KernelBlock<char> block;
  uint64_t length = 0;
  const int32_t read = ReadWholeStream(&*stream, block, length);
  if (read != StatusOk) return read;
  target.setData(block.take());
  target.setLength(length);
  return StatusOk;
} catch (const std::bad_alloc&) {
  return StatusOutOfMemory;
}

int32_t ReadMsgTextProperty(const CompoundStorage& storage, std::string_view name,
                            SizedBytes& target) {
  SizedBytes wide;
  const int32_t status = ReadMsgStream(storage, StreamName(name, "001F").get(), wide);
  if (status < StatusOk) return status;
  if (status == StatusOk) {
    if (wide.length() != 0) return ConvertWide(wide.view(), target);
    target.setLength(0);
    return StatusOk;
  }
  for (const std::string_view type : {"001E", "0102"}) {
    const int32_t read = ReadMsgStream(storage, StreamName(name, type).get(), target);
    if (read != kNoStream) return read;
  }
  target.setLength(0);
  return ConvertWide({}, target);
}

bool FindPropertyRecord(std::string_view properties, uint64_t start, uint16_t type, uint16_t id,
                        uint64_t& value) {
  for (uint64_t at = start; at + kPropertyRecordSize <= properties.size();
       at += kPropertyRecordSize) {
    const auto* const record = reinterpret_cast<const unsigned char*>(properties.data() + at);
    if (LoadLittleEndian<uint16_t>(record) != type) continue;
    if (LoadLittleEndian<uint16_t>(record + 2) != id) continue;
    value = LoadLittleEndian<uint64_t>(record + 8);
    return true;
  }
  return false;
}

}  // namespace tarn
