// A group whose bytes are all there and whose text ends before the text's end is passed in one
// step. Its control byte says which of the 16 bytes after it are the halves of references: a table
// has the masks that cut out their lengths, to be summed, and the upper halves of their offsets, to
// be compared. Only a group in which one of these may begin before the block is looked at token by
// token.
#include "rtf/LzfuCheck.h"

#include <array>

#include "Common/LittleEndian.h"

namespace tarn {
namespace {

constexpr uint64_t kGroupBytes = 1 + 2 * kLzfuGroupTokens;

constexpr uint64_t kEachByte = 0x0101010101010101U;
constexpr uint64_t kTopBits = 0x80 * kEachByte;

// What a control byte says of the 16 bytes after it, as two words.
struct GroupShape {
  uint64_t highs[2] = {};    // all bits of the first byte of each reference
  uint64_t lengths[2] = {};  // the lower four of its second byte
};

// Sizes are those of a group's tokens, which unpack to as many bytes and the sum of their lengths.
// They are apart from the rest: where the next group begins is what each group waits for.
struct Groups {
  std::array<GroupShape, 256> shapes;
  std::array<unsigned char, 256> sizes = {};
};

consteval Groups MakeGroups() {
  Groups groups;
  for (unsigned control = 0; control < groups.sizes.size(); ++control) {
    GroupShape& shape = groups.shapes[control];
    unsigned at = 0;
    for (unsigned token = 0; token < kLzfuGroupTokens; ++token, ++at) {
      if (((control >> token) & 1) == 0) continue;
      shape.highs[at / 8] |= uint64_t{0xFF} << (8 * (at % 8));
      ++at;
      shape.lengths[at / 8] |= uint64_t{0x0F} << (8 * (at % 8));
    }
    groups.sizes[control] = static_cast<unsigned char>(at);
  }
  return groups;
}

constexpr Groups kGroups = MakeGroups();

// Whether a byte of the word is `least` or more; that is at most 255.
bool HasByteFrom(uint64_t word, uint64_t least) {
  // The top bit of a sum tells whether the lower seven bits of its byte reach those of `least`.
  const uint64_t lower = (word & ~kTopBits) + (0x80 - (least & 0x7F)) * kEachByte;
  const uint64_t reached = least < 0x80 ? lower | word : lower & word;
  return (reached & kTopBits) != 0;
}

uint64_t SumOfBytes(uint64_t word) { return (word * kEachByte) >> 56; }

// A reference to a place that has not been written goes a whole window back, which is before the
// block's start until the position has left the first window.
bool IsSound(uint64_t offset, uint64_t position) {
  return position >= kLzfuWindow || offset < position;
}

uint64_t OffsetOf(unsigned high, unsigned low) { return (high << 4) | (low >> 4); }
uint64_t LengthOf(unsigned low) { return (low & 15) + 2; }

bool IsSoundGroup(const unsigned char* group, uint64_t position) {
  unsigned control = *group++;
  for (unsigned token = 0; token < kLzfuGroupTokens; ++token, control >>= 1) {
    if ((control & 1) == 0) {
      ++group;
      ++position;
      continue;
    }
    if (!IsSound(OffsetOf(group[0], group[1]), position)) return false;
    position += LengthOf(group[1]);
    group += 2;
  }
  return true;
}

}  // namespace

// Passes whole sound groups at the beginning of the bytes, and tells how many bytes they were.
uint64_t LzfuCheck::passGroups(std::span<const unsigned char> packed) {
  const unsigned char* const begin = packed.data();
  const unsigned char* at = begin;
  uint64_t left = packed.size();
  uint64_t position = position_;
  while (left >= kGroupBytes) {
    const GroupShape& shape = kGroups.shapes[*at];
    const uint64_t size = kGroups.sizes[*at];
    const auto first = LoadLittleEndian<uint64_t>(at + 1);
    const auto second = LoadLittleEndian<uint64_t>(at + 9);
    const uint64_t reached =
        position + size + SumOfBytes((first & shape.lengths[0]) + (second & shape.lengths[1]));
    if (reached > end_) break;
    if (position < kLzfuWindow) {
      const uint64_t least = position / 16;
      const bool isDoubtful =
          HasByteFrom(first & shape.highs[0], least) || HasByteFrom(second & shape.highs[1], least);
      if (isDoubtful && !IsSoundGroup(at, position)) break;
    }
    position = reached;
    at += 1 + size;
    left -= 1 + size;
  }
  position_ = position;
  return std::span(begin, at).size();
}

void LzfuCheck::take(std::span<const unsigned char> packed) {
  uint64_t at = 0;
  while (position_ < end_ && !isDamaged_) {
    if (tokensLeft_ == 0) at += passGroups(packed.subspan(at));
    if (at == packed.size()) return;
    const unsigned byte = packed[at++];
    if (tokensLeft_ == 0) {
      control_ = byte;
      tokensLeft_ = kLzfuGroupTokens;
    } else if ((control_ & 1) == 0) {
      ++position_;
      endToken();
    } else if (!hasHigh_) {
      high_ = byte;
      hasHigh_ = true;
    } else {
      passReference(byte);
      endToken();
    }
  }
}

void LzfuCheck::passReference(unsigned low) {
  const uint64_t length = LengthOf(low);
  hasHigh_ = false;
  isDamaged_ = !IsSound(OffsetOf(high_, low), position_) || length > room_ - position_;
  position_ += length;
}

void LzfuCheck::endToken() {
  control_ >>= 1;
  --tokensLeft_;
}

}  // namespace tarn
