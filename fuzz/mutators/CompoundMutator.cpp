#include "mutators/CompoundMutator.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "mutators/CompoundTree.h"
#include "mutators/CompoundTreeMutations.h"
#include "mutators/NumberMutation.h"

namespace tarn::fuzz {
namespace {

using namespace tarn::test;

constexpr std::string_view kMagic = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
constexpr size_t kHeaderBytes = 512;
constexpr size_t kFirstField = 24;
constexpr size_t kHeaderTable = 76;
constexpr size_t kShifts = 30;

// Puts back what a reader would refuse the file for at once: magic, version and block sizes.
void MendHeader(std::string& file) {
  if (file.size() < kHeaderBytes) file.resize(kHeaderBytes);
  file.replace(0, kMagic.size(), kMagic);
  constexpr std::string_view kVersion3("\x3E\0\x03\0\xFE\xFF\x09\0\x06\0", 10);
  constexpr std::string_view kVersion4("\x3E\0\x04\0\xFE\xFF\x0C\0\x06\0", 10);
  file.replace(kFirstField, kVersion3.size(), file[kShifts] == 12 ? kVersion4 : kVersion3);
}

class PlaceMutation {
 public:
  PlaceMutation(CompoundImage& image, Dice& dice) : image_(image), dice_(dice) {}

  void change() {
    const size_t kind = dice_.below(8);
    if (kind < 4) return changeRecord();
    if (kind < 6) return changeLink(image_.tableBlocks);
    if (kind == 6) return changeLink(image_.smallTableBlocks);
    changeHeader();
  }

 private:
  void changeBytes(size_t offset, size_t size, size_t width) {
    std::string bytes = image_.bytes.substr(offset, size);
    MutateNumber(bytes, width, dice_);
    image_.bytes.replace(offset, bytes.size(), bytes);
  }

  void changeRecord() {
    const size_t records = image_.directoryBlocks.size() * (image_.blockSize / 128);
    const size_t record = image_.record(static_cast<uint32_t>(dice_.below(records)));
    static constexpr CompoundRecordField kFields[] = {
        RecordLeft, RecordRight, RecordChild, RecordStart, RecordSize, RecordNameSize, RecordType};
    const CompoundRecordField field = dice_.pick(kFields);
    const size_t width = field == RecordNameSize ? 2 : field == RecordType ? 1 : 4;
    if (dice_.oneIn(3)) {
      // That of another record.
      const size_t other = image_.record(static_cast<uint32_t>(dice_.below(records)));
      image_.put(record + field, image_.get(other + field, width), width);
    } else {
      changeBytes(record + field, width, width);
    }
  }

  void changeLink(const std::vector<uint32_t>& table) {
    if (table.empty()) return;
    const size_t block = image_.block(dice_.pick(table));
    const size_t link = block + 4 * dice_.below(image_.blockSize / 4);
    static constexpr uint32_t kMarks[] = {0xFFFFFFFF, 0xFFFFFFFE, 0xFFFFFFFD, 0xFFFFFFFC, 0};
    if (dice_.oneIn(2)) return changeBytes(block, image_.blockSize, 4);
    const size_t blocks = image_.bytes.size() / image_.blockSize;
    image_.put(link, dice_.oneIn(2) ? dice_.pick(kMarks) : dice_.below(blocks));
  }

  void changeHeader() {
    const size_t width = dice_.oneIn(2) ? 2 : 4;
    changeBytes(kFirstField, kHeaderTable + 8 - kFirstField, width);
  }

  CompoundImage& image_;
  Dice& dice_;
};

CompoundOptions AnyOptions(Dice& dice) {
  CompoundOptions options;
  if (dice.oneIn(4)) options.version = CompoundVersion::V4;
  options.shape = static_cast<SiblingShape>(dice.oneIn(4) ? dice.below(3) : 0);
  options.order = static_cast<BlockOrder>(dice.oneIn(4) ? dice.below(3) : 0);
  if (dice.oneIn(16)) options.bigShift = static_cast<uint32_t>(7 + dice.below(6));
  return options;
}

}  // namespace

bool MutateCompoundFile(std::string& file, size_t most, Dice& dice,
                        const ByteMutation& mutate) try {
  std::optional<CompoundImage> image = MapCompoundFile(file);
  const size_t kind = dice.below(16);
  if (!image || kind == 0) {
    mutate(file, most);
    if (!dice.oneIn(4)) MendHeader(file);
  } else if (kind < 11) {
    CompoundEntry root = ReadCompoundTree(*image);
    const size_t room = most > file.size() ? most - file.size() : 0;
    do MutateCompoundTree(root, room, dice, mutate);
    while (dice.oneIn(3));
    file = WriteCompoundTree(root, AnyOptions(dice));
  } else {
    do PlaceMutation(*image, dice).change();
    while (dice.oneIn(2));
    file = std::move(image->bytes);
    if (!dice.oneIn(4)) MendHeader(file);
  }
  return file.size() <= most;
} catch (const std::out_of_range&) {
  return false;  // a structure lies beyond the end of the file
}

}  // namespace tarn::fuzz
