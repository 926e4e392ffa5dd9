#include "mutators/BlockMutations.h"

#include <string_view>

#include "mutators/NumberMutation.h"
#include "mutators/RtfMending.h"
#include "support/pst/PstBytes.h"

namespace tarn::fuzz {
namespace {

using tarn::test::GetLe;
using tarn::test::PutLe;

constexpr size_t kHeapSignature = 2;  // its place, one byte
constexpr uint64_t kHeapMark = 0xEC;
constexpr size_t kMapStart = 0;    // the place of the map's offset
constexpr size_t kMapOffsets = 4;  // after the counts of allocations and of freed ones
constexpr size_t kHeapHeader = 12;

// An allocation: two neighbours of the offsets in the heap's map.
struct Allocation {
  size_t map;
  size_t count;  // offsets less one
  size_t index;
  size_t begin;
  size_t end;
};

bool PickAllocation(std::string_view data, Dice& dice, Allocation& found) {
  if (data.size() < kHeapHeader || GetLe(data, kHeapSignature, 1) != kHeapMark) return false;
  found.map = GetLe(data, kMapStart, 2);
  if (found.map + kMapOffsets > data.size()) return false;
  found.count = GetLe(data, found.map, 2);
  if (found.count == 0 || found.count > (data.size() - found.map - kMapOffsets) / 2) return false;
  if (found.map + kMapOffsets + 2 * found.count + 2 > data.size()) return false;
  found.index = dice.below(found.count);
  const size_t place = found.map + kMapOffsets + 2 * found.index;
  found.begin = GetLe(data, place, 2);
  found.end = GetLe(data, place + 2, 2);
  return found.begin <= found.end && found.end <= found.map;
}

// Puts the contents in the allocation's place; what comes after it moves, by an even number of
// bytes.
void Replace(std::string& data, const Allocation& allocation, std::string contents) {
  const size_t size = allocation.end - allocation.begin;
  if ((contents.size() - size) % 2 != 0) contents.push_back('\0');
  const size_t growth = contents.size() - size;  // may wrap, and wraps back
  data.replace(allocation.begin, size, contents);
  const size_t map = allocation.map + growth;
  for (size_t i = allocation.index + 1; i <= allocation.count; ++i) {
    const size_t place = map + kMapOffsets + 2 * i;
    PutLe(data, place, GetLe(data, place, 2) + growth, 2);
  }
  PutLe(data, kMapStart, map, 2);
}

// Numbers where the contents are records of 8 or 4 bytes, as those of trees in a heap are.
void MutateContents(std::string& contents, size_t most, Dice& dice, const ByteMutation& mutate) {
  if (contents.size() % 8 == 0 && dice.oneIn(2)) return MutateNumber(contents, 4, dice);
  if (contents.size() % 4 == 0 && dice.oneIn(4)) return MutateNumber(contents, 2, dice);
  mutate(contents, most);
}

}  // namespace

void MutateBlockData(std::string& data, size_t most, Dice& dice, const ByteMutation& mutate) {
  Allocation allocation = {};
  if (!dice.oneIn(6) && PickAllocation(data, dice, allocation)) {
    std::string contents = data.substr(allocation.begin, allocation.end - allocation.begin);
    const size_t room = most > data.size() + 1 ? most - data.size() - 1 : 0;
    MutateContents(contents, contents.size() + room, dice, mutate);
    if (!dice.oneIn(8)) MendCompressedRtf(contents);
    const size_t largest = allocation.end - allocation.begin + room;
    if (contents.size() > largest) contents.resize(largest);
    return Replace(data, allocation, std::move(contents));
  }
  mutate(data, most);
  if (!dice.oneIn(8)) MendCompressedRtf(data);
}

}  // namespace tarn::fuzz
