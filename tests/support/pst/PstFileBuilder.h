// PstFileBuilder.h - writes a PST file from blocks and nodes (MS-PST 2.2).
//
//   PstFileBuilder file({.layout = PstLayout::Unicode, .encoding = PstEncoding::Permute});
//   file.node(0x122, file.data("bytes"), 0);
//   std::string image = file.bytes();
//
// Blocks are written as they are given; the two B-trees, the maps and the header follow in finish.
// A builder with a path streams into that file and keeps only a few words for each block and node.
// Every id is checked for nothing: a node may name blocks that do not exist, and two nodes may have
// one id. What cannot be written at all (a block of more than 8180 or 8176 bytes, a stream beyond
// two levels) throws std::length_error.
#ifndef TARN_TESTS_SUPPORT_PST_PSTFILEBUILDER_H
#define TARN_TESTS_SUPPORT_PST_PSTFILEBUILDER_H

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "support/pst/PstAllocator.h"
#include "support/pst/PstExtent.h"
#include "support/pst/PstLayout.h"
#include "support/pst/PstNodeParts.h"
#include "support/pst/PstOutput.h"
#include "support/pst/PstTreePages.h"

namespace tarn::test {

struct PstFileOptions {
  PstLayout layout = PstLayout::Unicode;
  PstEncoding encoding = PstEncoding::None;
  // wVer; 0 is 15 in the ANSI and 23 in the Unicode layout.
  uint16_t version = 0;
  PstTreeShape nbt = {};
  PstTreeShape bbt = {};
  // The file ends after its last extent, which is the root page of the block B-tree.
  bool isTrimmed = false;
  // Deviating: no maps at all (PstAllocator.h). Always trimmed.
  bool isCompact = false;
  // So many B-tree pages come before all blocks instead of after them, so that the last
  // extent of a trimmed file is a block.
  size_t leadingPages = 0;
};

class PstFileBuilder {
 public:
  explicit PstFileBuilder(const PstFileOptions& options = {});
  PstFileBuilder(const PstFileOptions& options, const std::filesystem::path& path);
  PstFileBuilder(const PstFileBuilder&) = delete;
  PstFileBuilder& operator=(const PstFileBuilder&) = delete;

  const PstFileOptions& options() const { return options_; }
  // Largest data of a block.
  size_t pageSize() const { return OffsetsOf(options_.layout).maxBlockData; }

  // The id that the next block gets.
  uint64_t nextBid(bool isInternal) const { return bidNextB_ | (isInternal ? 2U : 0U); }
  // One external block, encoded; also of no bytes.
  uint64_t block(std::string_view data);
  // One internal block, written as it is. It does not count as a reference to the blocks it names.
  uint64_t internalBlock(PstExtentKind kind, std::string_view data);
  // An XBLOCK (level 1) or XXBLOCK (level 2) over these blocks.
  uint64_t extendedBlock(uint8_t level, std::span<const uint64_t> ids, uint32_t totalSize);
  // Adds one to the count of references to a block of this file; other ids change nothing.
  void reference(uint64_t bid);

  // A stream in one block or as a tree; id 0 for no bytes.
  uint64_t data(std::string_view bytes, const DataTreeShape& shape = {});
  uint64_t dataOfPages(std::span<const std::string> pages, const DataTreeShape& shape = {});
  // Entries in the order of their ids; id 0 for none.
  uint64_t subnodes(std::span<const SubnodeEntry> entries, const SubnodeTreeShape& shape = {});

  void node(uint32_t nid, uint64_t dataBid, uint64_t subnodeBid, uint32_t parent = 0);
  void node(uint32_t nid, const PstNodeParts& parts, uint32_t parent = 0);

  // A page of its own, for trees by hand: room first, then the bytes before the trailer.
  PstPageRef reservePage();
  void writePage(const PstPageRef& page, PstExtentKind kind, std::string_view body);
  // Deviating: another root than that of the tree which the builder writes.
  void setNbtRoot(const PstPageRef& root) { nbtRoot_ = root; }
  void setBbtRoot(const PstPageRef& root) { bbtRoot_ = root; }
  // Deviating: an entry of the block B-tree for which no block is written.
  void blockEntry(const PstBlockEntry& entry) { extraBlocks_.push_back(entry); }

  // Writes trees, maps and header. Nothing can be added afterwards. A second call does nothing.
  void finish();
  // Finishes; the whole file of a builder in memory.
  const std::string& bytes();
  // Finishes; what is where, in no order.
  const std::vector<PstExtent>& extents();

 private:
  void reserveLeadingPages();
  uint64_t writeBlock(PstExtentKind kind, std::string_view data);
  uint64_t extendedLevel(uint8_t level, std::span<const uint64_t> ids,
                         std::span<const uint32_t> sizes, std::optional<uint32_t> totalSize);
  uint64_t writeParts(const PstNodeParts& parts, uint64_t* subnodeBid);
  PstPageRef takeTreePage();
  void writeHeader();

  PstFileOptions options_;
  PstOutput output_;
  std::vector<PstExtent> extents_;
  PstAllocator allocator_;
  uint64_t bidNextB_ = 4;
  uint64_t bidNextP_ = 1;
  std::vector<PstBlockEntry> blocks_;  // in the order of their ids
  std::vector<PstBlockEntry> extraBlocks_;
  std::vector<PstNodeEntry> nodes_;
  std::array<uint32_t, 32> nextIndexes_;
  std::vector<uint64_t> leadingPages_;  // offsets not yet taken, the last one first
  std::optional<PstPageRef> nbtRoot_;
  std::optional<PstPageRef> bbtRoot_;
  bool isFinished_ = false;
};

}  // namespace tarn::test

#endif
