#include "support/pst/PstTreePages.h"

#include <algorithm>
#include <vector>

namespace tarn::test {
namespace {

struct Child {
  uint64_t key;
  PstPageRef ref;
};

class TreeWriter {
 public:
  TreeWriter(PstLayout layout, const PstPageStore& store)
      : at_(OffsetsOf(layout)), layout_(layout), store_(store) {}

  // Adds a page of these entries to the level that is being written.
  void page(uint64_t key, const std::string& entries, size_t entrySize, uint8_t level) {
    const PstPageRef ref = store_.take();
    store_.write(ref, TreePageBody(layout_, entrySize, level, entries.size() / entrySize, entries));
    level_.push_back({key, ref});
  }

  PstPageRef finish(const PstTreeShape& shape) {
    const size_t room = at_.pageCounters / at_.innerEntry;
    const size_t wanted = shape.innerFanOut == 0 ? room : std::max<size_t>(shape.innerFanOut, 2);
    const size_t fanOut = std::min(wanted, room);
    uint8_t level = 0;
    while (level_.size() > 1 || level + 1U < shape.minLevels) {
      ++level;
      std::vector<Child> below;
      below.swap(level_);
      for (size_t i = 0; i < below.size(); i += fanOut) {
        std::string entries;
        for (size_t j = i; j < std::min(i + fanOut, below.size()); ++j) {
          entries += InnerEntryBytes(layout_, below[j].key, below[j].ref);
        }
        page(below[i].key, entries, at_.innerEntry, level);
      }
    }
    return level_.front().ref;
  }

  const PstOffsets& at() const { return at_; }
  PstLayout layout() const { return layout_; }

 private:
  const PstOffsets& at_;
  PstLayout layout_;
  const PstPageStore& store_;
  std::vector<Child> level_;
};

template <typename Entry, typename Key>
PstPageRef WriteTree(TreeWriter& writer, const PstTreeShape& shape, std::span<const Entry> entries,
                     size_t entrySize, const Key& key) {
  const size_t room = writer.at().pageCounters / entrySize;
  const size_t fanOut = shape.leafFanOut == 0 ? room : std::min(shape.leafFanOut, room);
  if (entries.empty()) writer.page(0, "", entrySize, 0);
  for (size_t i = 0; i < entries.size(); i += fanOut) {
    std::string body;
    const size_t count = std::min(fanOut, entries.size() - i);
    for (const Entry& entry : entries.subspan(i, count)) {
      body += EntryBytes(writer.layout(), entry);
    }
    writer.page(key(entries[i]), body, entrySize, 0);
  }
  return writer.finish(shape);
}

}  // namespace

PstPageRef WriteNodeTree(PstLayout layout, const PstTreeShape& shape,
                         std::span<const PstNodeEntry> entries, const PstPageStore& store) {
  TreeWriter writer(layout, store);
  return WriteTree(writer, shape, entries, writer.at().nbtLeafEntry,
                   [](const PstNodeEntry& entry) { return uint64_t{entry.nid}; });
}

PstPageRef WriteBlockTree(PstLayout layout, const PstTreeShape& shape,
                          std::span<const PstBlockEntry> entries, const PstPageStore& store) {
  TreeWriter writer(layout, store);
  return WriteTree(writer, shape, entries, writer.at().bbtLeafEntry,
                   [](const PstBlockEntry& entry) { return entry.bid; });
}

}  // namespace tarn::test
