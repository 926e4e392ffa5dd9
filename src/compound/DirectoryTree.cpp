#include "compound/DirectoryTree.h"

#include <compare>
#include <functional>
#include <optional>
#include <utility>

namespace tarn {
namespace {

// The sibling link to follow from a node that is not the one.
uint64_t LinkTowards(const DirectoryEntry& node, std::string_view name) {
  return std::is_lt(CompareNames(node.name, name)) ? node.next : node.prev;
}

// Splits a path into its names. Empty names in the middle stay; a "/" at the end adds none.
class PathPieces {
 public:
  explicit PathPieces(std::string_view path) : rest_(path) {
    if (!rest_.empty() && rest_.front() == '/') rest_.remove_prefix(1);
  }

  bool done() const { return rest_.empty(); }

  std::string_view next() {
    const size_t end = rest_.find('/');
    const std::string_view piece = rest_.substr(0, end);
    rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
    return piece;
  }

 private:
  std::string_view rest_;
};

}  // namespace

DirectoryTree::DirectoryTree() : entries_(1), isIndexed_(true) {
  entries_[0].valid = true;
  entries_[0].name = "Root Entry";
}

DirectoryTree::DirectoryTree(Entries entries, uint64_t steps)
    : entries_(std::move(entries)), stepsLeft_(steps) {}

uint64_t DirectoryTree::indexOf(const DirectoryEntry& entry) const {
  const DirectoryEntry* const first = entries_.data();
  const bool ours =
      std::greater_equal<>()(&entry, first) && std::less<>()(&entry, first + entries_.size());
  return ours ? static_cast<uint64_t>(&entry - first) : UINT64_MAX;
}

void DirectoryTree::setExtent(uint64_t index, uint64_t start, uint64_t size) {
  entries_[index].start = start;
  entries_[index].size = size;
}

uint64_t DirectoryTree::find(std::string_view path) {
  if (path.empty() || entries_.empty()) return kNoEntry;
  PathPieces pieces(path);
  uint64_t index = 0;
  while (!pieces.done() && index != kNoEntry) index = findChild(index, pieces.next(), nullptr);
  return index;
}

uint64_t DirectoryTree::findOrAdd(std::string_view path, KernelVector<Added>& added) {
  if (path.empty() || entries_.empty()) return kNoEntry;
  PathPieces pieces(path);
  uint64_t index = 0;
  while (!pieces.done()) {
    const std::string_view name = pieces.next();
    uint64_t closest = kNoEntry;
    const uint64_t parent = std::exchange(index, findChild(index, name, &closest));
    if (index != kNoEntry) continue;
    added.push_back(add(name, !pieces.done(), parent, closest));
    index = added.back().entry;
  }
  return index;
}

// Links an entry below the one where the search for its name ended, or, without one, below its
// parent. Gives the entry whose link has changed.
uint64_t DirectoryTree::link(uint64_t slot, uint64_t parent, uint64_t closest) {
  DirectoryEntry& entry = entries_[slot];
  if (closest >= entries_.size()) {
    entry.prev = kNoEntry;
    entry.next = std::exchange(entries_[parent].child, slot);
    return parent;
  }
  DirectoryEntry& above = entries_[closest];
  if (std::is_lt(CompareNames(above.name, entry.name))) {
    entry.prev = std::exchange(above.next, slot);
    entry.next = kNoEntry;
  } else {
    entry.next = std::exchange(above.prev, slot);
    entry.prev = kNoEntry;
  }
  return closest;
}

// Puts a new entry into the first free place.
DirectoryTree::Added DirectoryTree::add(std::string_view name, bool isDirectory, uint64_t parent,
                                        uint64_t closest) {
  uint64_t slot = firstMaybeInvalid_;
  while (slot < entries_.size() && entries_[slot].valid) ++slot;
  if (slot == entries_.size()) entries_.emplace_back();
  firstMaybeInvalid_ = slot;

  DirectoryEntry& entry = entries_[slot];
  entry.name = name;
  entry.valid = true;
  entry.isDirectory = isDirectory;
  entry.size = 0;
  entry.start = kChainEnd;
  entry.child = kNoEntry;
  const uint64_t above = link(slot, parent, closest);
  if (isIndexed_) {
    index_.add(parent, name, slot);
  } else {
    searched_.clear();
  }
  return {slot, above};
}

// Finds one name by the index. Where the search in the tree would end is told by the neighbours: of
// the two it is the one further down, which is the one without a link towards the other.
uint64_t DirectoryTree::findIndexed(uint64_t parent, std::string_view name,
                                    uint64_t& closest) const {
  const SiblingIndex::Place place = index_.find(parent, name);
  if (place.match != SiblingIndex::kNone) return place.match;
  if (place.before != SiblingIndex::kNone && entries_[place.before].next == kNoEntry) {
    closest = place.before;
  } else if (place.after != SiblingIndex::kNone) {
    closest = place.after;
  }
  return kNoEntry;
}

// Finds one name among the children of an entry along their links; kNoEntry without a match, and
// then `closest` is where the search came to its end, if it did. The first child may be any entry,
// the root included.
uint64_t DirectoryTree::findAlongLinks(uint64_t child, std::string_view name, uint64_t& closest) {
  const DirectoryEntry& node = entries_[child];
  if (node.name == name) return child;
  const uint64_t link = LinkTowards(node, name);
  if (link == 0 || link >= entries_.size()) {
    closest = child;
    return kNoEntry;
  }
  const uint64_t found = findSibling(link, name, closest);
  return found != 0 ? found : kNoEntry;
}

// Finds one name among the children of an entry; kNoEntry without a match. With `closest`, a search
// that came to its end tells where.
uint64_t DirectoryTree::findChild(uint64_t parent, std::string_view name, uint64_t* closest) {
  if (!entries_[parent].valid) return kNoEntry;
  const uint64_t child = entries_[parent].child;
  if (child >= entries_.size() || !entries_[child].valid) return kNoEntry;

  uint64_t place = kNoEntry;
  uint64_t& end = closest != nullptr ? *closest : place;
  if (isIndexed_) return findIndexed(parent, name, end);
  if (closest != nullptr) return findAlongLinks(child, name, end);

  if (const std::optional<uint64_t> known = searched_.find(entries_, parent, name)) return *known;
  // More than a red-black tree of any directory takes.
  constexpr uint64_t kLongSearch = 64;
  const uint64_t before = stepsLeft_;
  const uint64_t found = findAlongLinks(child, name, end);
  if (before - stepsLeft_ > kLongSearch) searched_.add(entries_, parent);
  return found;
}

// Each step of a search is decided by the entry alone, so one that follows more links than there
// are entries goes in a circle.
uint64_t DirectoryTree::findSibling(uint64_t index, std::string_view name, uint64_t& closest) {
  const uint64_t count = entries_.size();
  for (uint64_t steps = 0; steps <= count && stepsLeft_ != 0; ++steps, --stepsLeft_) {
    if (index >= count || !entries_[index].valid) return 0;
    const DirectoryEntry& node = entries_[index];
    if (node.name == name) return index;
    const uint64_t link = LinkTowards(node, name);
    if (link == 0 || link >= count) {
      closest = index;
      return 0;
    }
    index = link;
  }
  return 0;
}

// A tree of siblings in order: what is at `prev`, the node, what is at `next`.
KernelVector<KernelString> DirectoryTree::list(std::string_view path) {
  KernelVector<KernelString> names;
  const uint64_t storage = find(path);
  if (storage == kNoEntry || !entries_[storage].isDirectory || !entries_[storage].valid) {
    return names;
  }
  visits_.resize(entries_.size(), 0);
  ++visit_;
  BlockList way;  // entries to list, the last one next
  const auto descend = [&](uint64_t index) {
    while (index < entries_.size() && visits_[index] != visit_) {
      visits_[index] = visit_;
      way.push_back(index);
      index = entries_[index].prev;
    }
  };
  descend(entries_[storage].child);
  while (!way.empty()) {
    const DirectoryEntry& node = entries_[way.back()];
    way.pop_back();
    names.push_back(node.name);
    descend(node.next);
  }
  return names;
}

const DirectoryEntry* FindEntry(DirectoryTree& tree, std::string_view path) {
  const uint64_t index = tree.find(path);
  return index != kNoEntry ? &tree.entries()[index] : nullptr;
}

uint64_t FindSibling(DirectoryTree& tree, uint64_t index, std::string_view name,
                     uint64_t& closest) {
  return tree.findSibling(index, name, closest);
}

}  // namespace tarn
