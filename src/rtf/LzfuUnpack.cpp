// As long as a whole group fits into what is left of both sides, nothing needs a check but where a
// reference begins, and every token is a copy of 17 bytes of which only its own length counts: a
// literal from the input, a reference from the output. Which it is, the processor cannot foresee,
// so the choice is made without a branch. The last groups are unpacked byte by byte.
#include "rtf/LzfuUnpack.h"

#include <cstddef>
#include <cstring>
#include <utility>

#include "Common/LittleEndian.h"

namespace tarn {
namespace {

constexpr uint64_t kWideCopy = 16;

// What a group takes and makes at most, copies of 17 bytes from its last literal included.
constexpr uint64_t kGroupInput = 1 + 2 * kLzfuGroupTokens + kLzfuLongestToken;
constexpr uint64_t kGroupOutput = kLzfuGroupTokens * kLzfuLongestToken;

struct Reference {
  uint64_t distance;  // back from the write position, 1 to 4096
  uint64_t length;    // 2 to 17
};

Reference ReadReference(const unsigned char* input, uint64_t position) {
  const uint64_t offset = (uint64_t{input[0]} << 4) | (input[1] >> 4);
  return {((position - offset - 1) & (kLzfuWindow - 1)) + 1, (input[1] & 15u) + 2u};
}

// A copy that overlaps itself repeats its bytes.
void CopyUpwards(unsigned char* to, const unsigned char* from, uint64_t count) {
  for (uint64_t i = 0; i < count; ++i) to[i] = from[i];
}

class Unpacker {
 public:
  Unpacker(std::span<const unsigned char> packed, std::span<unsigned char> block)
      : input_(packed.data()), inputEnd_(packed.data() + packed.size()), block_(block) {}

  uint64_t position() const { return position_; }

  // Whole groups, as long as there is room for any group before `end`. False for damage.
  bool unpackGroups(uint64_t end) {
    while (inputLeft() >= kGroupInput && end - position_ >= kGroupOutput) {
      const unsigned char control = *input_;
      if (control == 0) {
        std::memcpy(block_.data() + position_, input_ + 1, kLzfuGroupTokens);
        input_ += 1 + kLzfuGroupTokens;
        position_ += kLzfuGroupTokens;
      } else if (!unpackGroup(control)) {
        return false;
      }
    }
    return true;
  }

  // Token by token up to the position `end`. False for damage.
  bool unpackTokens(uint64_t end) {
    unsigned control = 0;
    for (uint64_t token = 0; position_ < end; ++token) {
      control >>= 1;
      if (token % kLzfuGroupTokens == 0) {
        if (inputLeft() < 1) return false;
        control = *input_++;
      }
      if (!((control & 1) != 0 ? unpackReference() : unpackLiteral())) return false;
    }
    return true;
  }

 private:
  uint64_t inputLeft() const { return std::span(input_, inputEnd_).size(); }

  bool unpackGroup(unsigned control) {
    const unsigned char* input = input_ + 1;
    uint64_t position = position_;
    for (uint64_t token = 0; token < kLzfuGroupTokens; ++token, control >>= 1) {
      const bool isReference = (control & 1) != 0;
      unsigned char* const to = block_.data() + position;
      const Reference reference = ReadReference(input, position);
      const uint64_t distance = isReference ? reference.distance : kWideCopy;
      if (distance > position) return false;
      const unsigned char* const from = isReference ? to - distance : input;
      const uint64_t length = isReference ? reference.length : 1;
      if (distance < kWideCopy) {
        CopyUpwards(to, from, length);
      } else {
        unsigned char wide[kWideCopy];
        std::memcpy(wide, from, kWideCopy);
        std::memcpy(to, wide, kWideCopy);
        to[kWideCopy] = from[kWideCopy];
      }
      input += isReference ? 2 : 1;
      position += length;
    }
    input_ = input;
    position_ = position;
    return true;
  }

  bool unpackLiteral() {
    if (inputLeft() < 1) return false;
    block_[position_++] = *input_++;
    return true;
  }

  bool unpackReference() {
    if (inputLeft() < 2) return false;
    const Reference reference = ReadReference(input_, position_);
    if (reference.distance > position_) return false;
    if (reference.length > block_.size() - position_) return false;
    unsigned char* const to = block_.data() + position_;
    CopyUpwards(to, to - reference.distance, reference.length);
    input_ += 2;
    position_ += reference.length;
    return true;
  }

  const unsigned char* input_;
  const unsigned char* inputEnd_;
  std::span<unsigned char> block_;
  uint64_t position_ = kLzfuFixedSize;
};

}  // namespace

CompressedRtfHeader ReadCompressedRtfHeader(std::span<const unsigned char> source) {
  const auto field = [&](size_t offset) {
    return LoadLittleEndian<uint32_t>(source.data() + offset);
  };
  return {field(0), static_cast<int32_t>(field(4)), field(8), field(12)};
}

uint64_t LongestUnpackedText(uint64_t packedSize) {
  constexpr uint64_t kGroupSize = 1 + 2 * kLzfuGroupTokens;
  const uint64_t full = packedSize / kGroupSize;
  const uint64_t tokenBytes = packedSize % kGroupSize == 0 ? 0 : packedSize % kGroupSize - 1;
  const uint64_t last = tokenBytes / 2 * kLzfuLongestToken + tokenBytes % 2;
  return full * kGroupOutput + last;
}

uint64_t UnpackLzfu(std::span<const unsigned char> packed, std::span<unsigned char> block,
                    uint64_t end) {
  Unpacker unpacker(packed, block);
  if (!unpacker.unpackGroups(end) || !unpacker.unpackTokens(end)) return 0;
  return unpacker.position();
}

Status UnpackLzfuText(std::span<const unsigned char> packed, int32_t rawSize, uint64_t spare,
                      LzfuText& text) {
  // Without its sign a negative size is longer than any text.
  const auto size = static_cast<uint64_t>(rawSize);
  if (size > LongestUnpackedText(packed.size())) return StatusNotSupported;
  const uint64_t end = kLzfuFixedSize + size;
  auto block = AllocateBlock<char>(end + spare, TARN_HERE);
  if (!block) return StatusOutOfMemory;
  std::memcpy(block.get(), kLzfuFixedText.data(), kLzfuFixedSize);
  auto* const bytes = reinterpret_cast<unsigned char*>(block.get());
  const uint64_t reached = UnpackLzfu(packed, {bytes, end + spare}, end);
  if (reached == 0) return StatusNotSupported;
  text = {std::move(block), size, reached};
  return StatusOk;
}

}  // namespace tarn
