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

struct CompoundStorage;

inline constexpr uint64_t kDirectoryRecordSize = 128;
inline constexpr uint64_t kRecordStartOffset = 116;
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

struct DirectoryTree {
  uint32_t rootKind = 0;  // which class id the root is written with; 0: none
  KernelVector<DirectoryEntry> entries;
  BlockMarks dirtyBlocks;          // indexes of the directory's blocks that changed
  uint64_t stepsLeft;              // links that searches of a file's directory may still follow
  uint64_t firstMaybeInvalid = 0;  // no entry in front of it is invalid, while entries are added
  KernelVector<uint32_t> visits;   // for each entry the last listing that met it
  uint32_t visit = 0;              // the number of that listing
  bool isIndexed = true;           // every entry was made by FindEntry
  SiblingIndex index;              // of an indexed directory
  SearchIndex searched;            // of another: its storages where searches took long

  // One entry, the root, in a block that is to be written.
  DirectoryTree();
};

// Takes the whole directory from its bytes, and lets searches cost anew; a tail shorter than a
// record is dropped. A control character that begins a name is left out.
void LoadDirectory(DirectoryTree& tree, const unsigned char* bytes, uint64_t length);

// The record bytes of all entries. Storages lose their start and size.
KernelVector<unsigned char> SaveDirectory(DirectoryTree& tree);

// Writes the marked ones of the directory's blocks; the last may be written in part.
void FlushDirectory(DirectoryTree& tree, const BlockList& blocks, CompoundFile& file,
                    uint64_t bigBlockSize, uint64_t containerStart, uint64_t containerSize);

// The entry of a path, or null. "/" is the root, and an empty path nothing. With `create` and a
// writable file a missing entry is made, with all storages that lead to it. Entries stay where they
// are until the next one is made.
DirectoryEntry* FindEntry(DirectoryTree& tree, std::string_view path, bool create,
                          uint64_t bigBlockSize, CompoundFile* file);

// Searches the tree of siblings at `index`. The index of the match; 0 without one, and then
// `closest` is the entry below which the name would hang, if the search came to its end.
uint64_t FindSibling(DirectoryTree& tree, uint64_t index, std::string_view name, uint64_t& closest);

// The names below a storage, in the order of its tree; an entry that is met again is passed over
// with what is below it. Empty for a stream and for a path without an entry.
KernelVector<KernelString> ListEntryNames(const CompoundStorage& storage, std::string_view path);

// Marks the block of the directory that holds the entry.
void MarkDirectoryDirty(DirectoryTree& tree, uint64_t index, uint64_t bigBlockSize);

}  // namespace tarn

#endif
