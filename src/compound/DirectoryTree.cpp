#include "compound/DirectoryTree.h"

#include <algorithm>
#include <compare>

#include "compound/CompoundFile.h"

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

// Links a new entry below the entry where the search ended, or, without one, below its parent.
void LinkNewEntry(DirectoryTree& tree, uint64_t slot, uint64_t parent, uint64_t closest,
                  uint64_t bigBlockSize) {
  DirectoryEntry& entry = tree.entries[slot];
  if (closest >= tree.entries.size()) {
    entry.prev = kNoEntry;
    entry.next = tree.entries[parent].child;
    tree.entries[parent].child = slot;
    MarkDirectoryDirty(tree, parent, bigBlockSize);
    return;
  }
  DirectoryEntry& above = tree.entries[closest];
  if (std::is_lt(CompareNames(above.name, entry.name))) {
    entry.prev = above.next;
    entry.next = kNoEntry;
    above.next = slot;
  } else {
    entry.next = above.prev;
    entry.prev = kNoEntry;
    above.prev = slot;
  }
  MarkDirectoryDirty(tree, closest, bigBlockSize);
}

// A new entry in the first free place. Gives its index.
uint64_t CreateEntry(DirectoryTree& tree, std::string_view name, bool isDirectory, uint64_t parent,
                     uint64_t closest, uint64_t bigBlockSize, CompoundFile& file) {
  uint64_t slot = tree.firstMaybeInvalid;
  while (slot < tree.entries.size() && tree.entries[slot].valid) ++slot;
  if (slot == tree.entries.size()) tree.entries.emplace_back();
  tree.firstMaybeInvalid = slot;

  DirectoryEntry& entry = tree.entries[slot];
  entry.name = name;
  entry.valid = true;
  entry.isDirectory = isDirectory;
  entry.size = 0;
  entry.start = kChainEnd;
  entry.child = kNoEntry;
  LinkNewEntry(tree, slot, parent, closest, bigBlockSize);
  if (tree.isIndexed) {
    tree.index.add(parent, name, slot);
  } else {
    tree.searched.clear();
  }
  MarkDirectoryDirty(tree, slot, bigBlockSize);
  GrowDirectory(file, slot / (bigBlockSize / kDirectoryRecordSize));
  return slot;
}

// Finds one name by the index. Where the search in the tree would end is told by the neighbours: of
// the two it is the one further down, which is the one without a link towards the other.
uint64_t FindIndexed(const DirectoryTree& tree, uint64_t parent, std::string_view name,
                     uint64_t& closest) {
  const SiblingIndex::Place place = tree.index.find(parent, name);
  if (place.match != SiblingIndex::kNone) return place.match;
  if (place.before != SiblingIndex::kNone && tree.entries[place.before].next == kNoEntry) {
    closest = place.before;
  } else if (place.behind != SiblingIndex::kNone) {
    closest = place.behind;
  }
  return kNoEntry;
}

// Finds one name among the children of an entry along their links; kNoEntry without a match, and
// then `closest` is where the search came to its end, if it did. The first child may be any entry,
// the root included.
uint64_t FindAlongLinks(DirectoryTree& tree, uint64_t child, std::string_view name,
                        uint64_t& closest) {
  const DirectoryEntry& node = tree.entries[child];
  if (node.name == name) return child;
  const uint64_t link = LinkTowards(node, name);
  if (link == 0 || link >= tree.entries.size()) {
    closest = child;
    return kNoEntry;
  }
  const uint64_t found = FindSibling(tree, link, name, closest);
  return found != 0 ? found : kNoEntry;
}

// Finds one name among the children of an entry; kNoEntry without a match. With `closest`, a search
// that came to its end tells where.
uint64_t FindChild(DirectoryTree& tree, uint64_t parent, std::string_view name, uint64_t* closest) {
  const uint64_t count = tree.entries.size();
  if (parent >= count || !tree.entries[parent].valid) return kNoEntry;
  const uint64_t child = tree.entries[parent].child;
  if (child >= count || !tree.entries[child].valid) return kNoEntry;

  uint64_t place = kNoEntry;
  uint64_t& end = closest != nullptr ? *closest : place;
  if (tree.isIndexed) return FindIndexed(tree, parent, name, end);
  if (closest != nullptr) return FindAlongLinks(tree, child, name, end);

  uint64_t found = kNoEntry;
  if (tree.searched.find(tree.entries, parent, name, found)) return found;
  // More than a red-black tree of any directory takes.
  constexpr uint64_t kLongSearch = 64;
  const uint64_t before = tree.stepsLeft;
  found = FindAlongLinks(tree, child, name, end);
  if (before - tree.stepsLeft > kLongSearch) tree.searched.add(tree.entries, parent);
  return found;
}

}  // namespace

// Each step of a search is decided by the entry alone, so one that follows more links than there
// are entries goes in a circle.
uint64_t FindSibling(DirectoryTree& tree, uint64_t index, std::string_view name,
                     uint64_t& closest) {
  const uint64_t count = tree.entries.size();
  for (uint64_t steps = 0; steps <= count && tree.stepsLeft != 0; ++steps, --tree.stepsLeft) {
    if (index >= count || !tree.entries[index].valid) return 0;
    const DirectoryEntry& node = tree.entries[index];
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

DirectoryEntry* FindEntry(DirectoryTree& tree, std::string_view path, bool create,
                          uint64_t bigBlockSize, CompoundFile* file) {
  if (path.empty()) return nullptr;
  if (path == "/") return tree.entries.empty() ? nullptr : &tree.entries[0];

  const bool mayCreate = create && file != nullptr && file->writable;
  PathPieces pieces(path);
  uint64_t index = 0;
  while (!pieces.done()) {
    const std::string_view name = pieces.next();
    uint64_t closest = kNoEntry;
    uint64_t found = FindChild(tree, index, name, mayCreate ? &closest : nullptr);
    if (found == kNoEntry) {
      if (!mayCreate || index >= tree.entries.size()) return nullptr;
      found = CreateEntry(tree, name, !pieces.done(), index, closest, bigBlockSize, *file);
    }
    index = found;
  }
  return index < tree.entries.size() ? &tree.entries[index] : nullptr;
}

namespace {

// Walks a tree of siblings in order: what is at `prev`, the node, what is at `next`.
class SiblingWalk {
 public:
  SiblingWalk(DirectoryTree& tree, KernelVector<KernelString>& names) : tree_(tree), names_(names) {
    tree.visits.resize(tree.entries.size(), 0);
    if (++tree.visit == 0) {
      std::fill(tree.visits.begin(), tree.visits.end(), 0);
      tree.visit = 1;
    }
  }

  void run(uint64_t index) {
    descend(index);
    while (!path_.empty()) {
      const DirectoryEntry& node = tree_.entries[path_.back()];
      path_.pop_back();
      names_.push_back(node.name);
      descend(node.next);
    }
  }

 private:
  // Puts an entry and all that leads from it to the left on the path.
  void descend(uint64_t index) {
    while (index < tree_.entries.size() && tree_.visits[index] != tree_.visit) {
      tree_.visits[index] = tree_.visit;
      path_.push_back(index);
      index = tree_.entries[index].prev;
    }
  }

  DirectoryTree& tree_;
  KernelVector<KernelString>& names_;
  BlockList path_;
};

}  // namespace

KernelVector<KernelString> ListEntryNames(const CompoundStorage& storage, std::string_view path) {
  KernelVector<KernelString> names;
  CompoundFile& file = *storage.file;
  const DirectoryEntry* const entry =
      FindEntry(file.directory, path, false, file.bigTable.blockSize, nullptr);
  if (entry == nullptr || !entry->isDirectory || !entry->valid) return names;
  SiblingWalk(file.directory, names).run(entry->child);
  return names;
}

}  // namespace tarn
