// DirectoryTree.h - the directory of a compound file (MS-CFB 2.6): an array of records of 128
// bytes, in which the children of each storage form a binary search tree.
//
//   offset 0  64  name, UTF-16       read as its low bytes
//         64   2  name size in bytes
//         66   1  type               1 storage, 2 stream, 5 root
//         67   1  colour             not read
//         68   4  prev               left sibling
//         72   4  next               right sibling
//         76   4  child              root of the children's tree
//         80  16  class id           not read
//         96  20  state and times    not read
//        116   4  start              first block
//        120   4  size               in bytes
//        124   4  high size          not read
//
// Names are narrow and compared byte by byte, first by length: "a" and "A" are two names. Paths are
// names joined by "/". A damaged directory makes entries unfindable and nothing worse: a search
// ends where it meets an entry twice, and a file's searches together take a bounded time. Trees
// need not be balanced: a storage where a search took long is searched by an index from then on.
#ifndef TARN_COMPOUND_DIRECTORYTREE_H
#define TARN_COMPOUND_DIRECTORYTREE_H

#include <string_view>

#include "compound/BlockTable.h"
#include "compound/SearchIndex.h"
#include "compound/SiblingIndex.h"

namespace tarn {

inline constexpr uint64_t kDirectoryRecordSize = 128;
inline constexpr uint64_t kRecordStartOffset = 116;
inline constexpr uint64_t kRecordSizeOffset = 120;
inline constexpr uint64_t kNoEntry = 0xFFFFFFFF;

struct DirectoryEntry {
  bool valid = false;  // an invalid entry keeps its place
  KernelString name;
  bool isDirectory = true;
  uint64_t size = 0;
  uint64_t start = kNoEntry;
  uint64_t prev = kNoEntry;
  uint64_t next = kNoEntry;
  uint64_t child = kNoEntry;
};

class DirectoryTree {
 public:
  using Entries = KernelVector<DirectoryEntry>;

  // Searches together may follow this many links: what six million look-ups in a balanced directory
  // of a million entries take, and ten thousand in one of that many that is a list.
  static constexpr uint64_t kSearchSteps = uint64_t{1} << 27;

  // An entry that was added, and the one whose link leads to it now.
  struct Added {
    uint64_t entry;
    uint64_t above;
  };

  // A new directory, which has the root.
  DirectoryTree();
  // One that came with a file.
  explicit DirectoryTree(Entries entries, uint64_t steps = kSearchSteps);

  uint32_t rootKind = 0;  // which class id the root is written with; 0: none

  const Entries& entries() const { return entries_; }
  // All ones for an entry of another directory.
  uint64_t indexOf(const DirectoryEntry& entry) const;
  void setExtent(uint64_t index, uint64_t start, uint64_t size);

  // The index of a path's entry, or kNoEntry. "/" is the root, and an empty path nothing.
  uint64_t find(std::string_view path);

  // The same, but what is missing is made, with all storages that lead to it, and appended to
  // `added`. kNoEntry for an empty path, and in an empty directory.
  uint64_t findOrAdd(std::string_view path, KernelVector<Added>& added);

  // Searches the tree of siblings at `index`. The index of the match; 0 without one, and then
  // `closest` is the entry below which the name would hang, if the search came to its end.
  uint64_t findSibling(uint64_t index, std::string_view name, uint64_t& closest);

  // The names below a storage, in the order of its tree; an entry that is met again is passed over
  // with what is below it. Empty for a stream and for a path without an entry.
  KernelVector<KernelString> list(std::string_view path);

  // How many links searches may still follow.
  uint64_t stepsLeft() const { return stepsLeft_; }
  const SearchIndex& searchIndex() const { return searched_; }

 private:
  uint64_t findIndexed(uint64_t parent, std::string_view name, uint64_t& closest) const;
  uint64_t findAlongLinks(uint64_t child, std::string_view name, uint64_t& closest);
  uint64_t findChild(uint64_t parent, std::string_view name, uint64_t* closest);
  uint64_t link(uint64_t slot, uint64_t parent, uint64_t closest);
  Added add(std::string_view name, bool isDirectory, uint64_t parent, uint64_t closest);

  Entries entries_;
  uint64_t stepsLeft_ = kSearchSteps;
  uint64_t firstMaybeInvalid_ = 0;  // no entry before it is invalid
  BlockList visits_;                // for each entry the last listing that met it
  uint64_t visit_ = 0;              // the number of that listing
  bool isIndexed_ = false;          // every entry but the root was added
  SiblingIndex index_;              // of an indexed directory
  SearchIndex searched_;            // of another: its storages where searches took long
};

// Takes the whole directory from its bytes, and lets searches cost anew; a tail shorter than a
// record is dropped. A control character that begins a name is left out.
void LoadDirectory(DirectoryTree& tree, ByteView bytes);

// The record bytes of all entries. Storages lose their start and size.
KernelVector<unsigned char> SaveDirectory(DirectoryTree& tree);

// DirectoryTree::find as an entry, or null. Entries stay where they are until the next is added.
const DirectoryEntry* FindEntry(DirectoryTree& tree, std::string_view path);

// DirectoryTree::findSibling.
uint64_t FindSibling(DirectoryTree& tree, uint64_t index, std::string_view name, uint64_t& closest);

}  // namespace tarn

#endif
