#include "mutators/CompoundTreeMutations.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "mutators/NumberMutation.h"
#include "mutators/RtfMending.h"

namespace tarn::fuzz {
namespace {

// Names that a reader of MSG files looks for (MS-OXMSG), and the ids and types in them.
constexpr std::u16string_view kNames[] = {
    u"__properties_version1.0",       u"__nameid_version1.0",
    u"__recip_version1.0_#00000000",  u"__attach_version1.0_#00000000",
    u"__attach_version1.0_#00000001", u"__attach_version1.0_#0000000A",
    u"__substg1.0_3701000D"};
constexpr std::u16string_view kIds[] = {
    u"0037", u"0C1A", u"0C1F", u"5D01", u"0042", u"0065", u"0E02", u"0E03", u"0E04",
    u"1000", u"1009", u"1013", u"3001", u"3003", u"39FE", u"3701", u"3703", u"3704",
    u"3707", u"370E", u"3712", u"3716", u"3713", u"0E1D", u"3FFD", u"3FDE"};
constexpr std::u16string_view kTypes[] = {u"001E", u"001F", u"0102", u"000D"};

class TreeMutation {
 public:
  TreeMutation(size_t room, Dice& dice, const ByteMutation& mutate)
      : room_(room), dice_(dice), mutate_(mutate) {}

  void change(CompoundEntry& root) {
    collect(root);
    switch (streams_.empty() ? 12 + dice_.below(4) : dice_.below(16)) {
      default:
        return changeContent(*dice_.pick(streams_));
      case 9:
        return copyContent();
      case 10:
        // Rarely: large inputs cost time in all runs after.
        if (!dice_.oneIn(8)) return copyContent();
        return repeatContent(*dice_.pick(streams_));
      case 11:
        return rename();
      case 12:
        return addStream();
      case 13:
        return duplicate();
      case 14:
        return remove();
      case 15:
        return moveInto();
    }
  }

 private:
  void collect(CompoundEntry& folder) {
    folders_.push_back(&folder);
    for (CompoundEntry& child : folder.children) {
      entries_.push_back(&child);
      if (child.isStream) {
        streams_.push_back(&child);
      } else {
        collect(child);
      }
    }
  }

  void changeContent(CompoundEntry& stream) {
    // Records of 16 bytes after a header: what a properties stream holds.
    const bool isRecords = stream.name == kNames[0] && !dice_.oneIn(4);
    if (isRecords) {
      MutateNumber(stream.bytes, dice_.oneIn(2) ? 4 : 2, dice_);
      if (dice_.oneIn(2)) return;
    }
    mutate_(stream.bytes, stream.bytes.size() + room_);
    if (!dice_.oneIn(8)) MendCompressedRtf(stream.bytes);
  }

  void copyContent() {
    const std::string bytes = dice_.pick(streams_)->bytes;
    if (bytes.size() <= room_) dice_.pick(streams_)->bytes = bytes;
  }

  void repeatContent(CompoundEntry& stream) {
    const std::string once = stream.bytes;
    const size_t times = size_t{1} << dice_.below(12);
    if (once.empty() || once.size() * times > room_) return;
    for (size_t i = 0; i < times; ++i) stream.bytes += once;
  }

  std::u16string anyName() {
    if (dice_.oneIn(3)) return std::u16string(dice_.pick(kNames));
    std::u16string name = u"__substg1.0_";
    return name.append(dice_.pick(kIds)).append(dice_.pick(kTypes));
  }

  void rename() {
    std::u16string& name = dice_.pick(entries_)->name;
    switch (dice_.below(4)) {
      case 0:
        std::swap(name, dice_.pick(entries_)->name);
        break;
      case 1:
        name = anyName();
        break;
      case 2:
        name[dice_.below(name.size())] = u"0123456789ABCDEF#/_\0"[dice_.below(20)];
        break;
      default:
        name[dice_.below(name.size())] = static_cast<char16_t>(dice_.any());
        break;
    }
  }

  void addStream() {
    CompoundEntry made;
    made.name = anyName();
    made.isStream = true;
    if (!streams_.empty() && dice_.oneIn(2)) made.bytes = dice_.pick(streams_)->bytes;
    if (made.bytes.size() > room_) made.bytes.clear();
    mutate_(made.bytes, std::min<size_t>(room_, 64) + made.bytes.size());
    insert(*dice_.pick(folders_), std::move(made));
  }

  // A stream or a storage with all that it holds, under the next number or another name.
  void duplicate() {
    if (entries_.empty()) return;
    CompoundEntry copy = *dice_.pick(entries_);
    if (SizeOf(copy) > room_) return;
    if (dice_.oneIn(2)) {
      ++copy.name.back();
    } else {
      copy.name = anyName();
    }
    insert(*dice_.pick(folders_), std::move(copy));
  }

  void remove() {
    CompoundEntry& folder = *dice_.pick(folders_);
    if (folder.children.empty()) return;
    folder.children.erase(folder.children.begin() +
                          static_cast<std::ptrdiff_t>(dice_.below(folder.children.size())));
  }

  // A storage's children become those of another, as in an embedded message.
  void moveInto() {
    const CompoundEntry& source = *dice_.pick(folders_);
    if (SizeOf(source) > room_) return;
    std::vector<CompoundEntry> copies = source.children;
    CompoundEntry made;
    made.name = kNames[6];
    made.children = std::move(copies);
    insert(*dice_.pick(folders_), std::move(made));
  }

  static size_t SizeOf(const CompoundEntry& entry) {
    size_t size = 128 + entry.bytes.size();
    for (const CompoundEntry& child : entry.children) size += SizeOf(child);
    return size;
  }

  static void insert(CompoundEntry& folder, CompoundEntry made) {
    for (CompoundEntry& child : folder.children) {
      if (child.name != made.name) continue;
      child = std::move(made);
      return;
    }
    folder.children.push_back(std::move(made));
  }

  size_t room_;
  Dice& dice_;
  const ByteMutation& mutate_;
  std::vector<CompoundEntry*> folders_;
  std::vector<CompoundEntry*> streams_;
  std::vector<CompoundEntry*> entries_;
};

}  // namespace

void MutateCompoundTree(CompoundEntry& root, size_t room, Dice& dice, const ByteMutation& mutate) {
  TreeMutation(room, dice, mutate).change(root);
}

}  // namespace tarn::fuzz
