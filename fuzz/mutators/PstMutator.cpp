#include "mutators/PstMutator.h"

#include <algorithm>
#include <optional>

#include "mutators/BlockMutations.h"
#include "mutators/NumberMutation.h"
#include "support/pst/PstBytes.h"
#include "support/pst/PstCodec.h"
#include "support/pst/PstDamage.h"
#include "support/pst/PstImageMap.h"

namespace tarn::fuzz {
namespace {

using namespace tarn::test;

constexpr uint64_t kInternal = 2;  // bit of the ids of blocks that are not encoded

class PstMutation {
 public:
  PstMutation(std::string& image, size_t most, const PstImageMap& map, Dice& dice,
              const ByteMutation& mutate)
      : image_(image),
        most_(most),
        map_(map),
        at_(OffsetsOf(map.layout)),
        dice_(dice),
        mutate_(mutate) {}

  bool change() {
    const size_t kind = dice_.below(16);
    if (kind < 9) return changeBlock();
    if (kind < 12) return changeEntry();
    if (kind == 12) return copyBlock();
    if (kind == 13) return changeHeader();
    return changeImage();
  }

 private:
  PstEncoding encoding() const {
    const auto method = static_cast<uint8_t>(image_[at_.bCryptMethod]);
    return method <= 2 ? static_cast<PstEncoding>(method) : PstEncoding::None;
  }

  PstEncoding encodingOf(const PstImageBlock& block) const {
    return (block.id & kInternal) != 0 ? PstEncoding::None : encoding();
  }

  std::string read(const PstImageBlock& block) const {
    const std::string_view bytes =
        std::string_view(image_).substr(static_cast<size_t>(block.offset), block.size);
    return PstDecode(encodingOf(block), block.id, bytes);
  }

  // False when the image has no room for the block.
  bool write(const PstImageBlock& block, std::string_view data) {
    const size_t extent = BlockExtent(map_.layout, data.size());
    auto offset = static_cast<size_t>(block.offset);
    if (extent > BlockExtent(map_.layout, block.size)) {
      offset = (image_.size() + kPstBlockAlignment - 1) / kPstBlockAlignment * kPstBlockAlignment;
      if (offset + extent > most_) return false;
      image_.resize(offset + extent);
      PutLe(image_, block.entry + at_.idWidth, offset, at_.idWidth);
    }
    PutLe(image_, block.entry + 2 * at_.idWidth, data.size(), 2);
    PutBytes(image_, offset, PstEncode(encodingOf(block), block.id, data));
    return true;
  }

  bool changeBlock() {
    if (map_.blocks.empty()) return false;
    const PstImageBlock& block = dice_.pick(map_.blocks);
    std::string data = read(block);
    if ((block.id & kInternal) != 0) {
      MutateNumber(data, at_.idWidth, dice_);
    } else {
      MutateBlockData(data, at_.maxBlockData, dice_, mutate_);
    }
    return write(block, data);
  }

  bool copyBlock() {
    if (map_.blocks.empty()) return false;
    return write(dice_.pick(map_.blocks), read(dice_.pick(map_.blocks)));
  }

  // A field of an entry gets another number, or that of another entry of the page.
  bool changeEntry() {
    if (map_.pages.empty()) return false;
    const PstImagePage& page = dice_.pick(map_.pages);
    const auto start = static_cast<size_t>(page.offset);
    if (page.entries == 0 || dice_.oneIn(8)) {
      std::string counters = image_.substr(start + at_.pageCounters, 4);
      MutateNumber(counters, 1, dice_);
      PutBytes(image_, start + at_.pageCounters, counters);
      return true;
    }
    const size_t entry = start + dice_.below(page.entries) * page.entrySize;
    std::string bytes = image_.substr(entry, page.entrySize);
    if (dice_.oneIn(2)) {
      const size_t other = start + dice_.below(page.entries) * page.entrySize;
      const size_t field = dice_.below(page.entrySize / at_.idWidth) * at_.idWidth;
      bytes.replace(field, at_.idWidth, image_, other + field, at_.idWidth);
    } else {
      MutateNumber(bytes, dice_.oneIn(4) ? 2 : at_.idWidth, dice_);
    }
    PutBytes(image_, entry, bytes);
    return true;
  }

  // The encoding, or a reference to one of the trees.
  bool changeHeader() {
    if (dice_.oneIn(2)) {
      PutLe(image_, at_.bCryptMethod, dice_.below(4), 1);
      return true;
    }
    const size_t root = dice_.oneIn(2) ? at_.brefNbt : at_.brefBbt;
    std::string reference = image_.substr(root, 2 * at_.idWidth);
    if (!map_.pages.empty() && dice_.oneIn(2)) {
      const PstImagePage& page = dice_.pick(map_.pages);
      PutLe(reference, 0, page.id, at_.idWidth);
      PutLe(reference, at_.idWidth, page.offset, at_.idWidth);
    } else {
      MutateNumber(reference, at_.idWidth, dice_);
    }
    PutBytes(image_, root, reference);
    return true;
  }

  bool changeImage() {
    mutate_(image_, most_);
    return true;
  }

  std::string& image_;
  size_t most_;
  const PstImageMap& map_;
  const PstOffsets& at_;
  Dice& dice_;
  const ByteMutation& mutate_;
};

}  // namespace

bool MutatePstImage(std::string& image, size_t most, Dice& dice, const ByteMutation& mutate) {
  size_t rounds = 1 + dice.below(3);
  bool changed = false;
  for (; rounds != 0; --rounds) {
    const std::optional<PstImageMap> map = MapPstImage(image);
    if (!map) return changed;
    changed |= PstMutation(image, most, *map, dice, mutate).change();
  }
  RepairPstImage(image);
  return changed && image.size() <= most;
}

}  // namespace tarn::fuzz
