// RawImage.h - stores put together by hand, for tests that say exactly what is where.
//
// An image has one leaf page for each of its two trees, unless a test puts other pages there, and
// its blocks from 0x2000 on, with the ids that the test gives them. Everything can be overwritten:
// bytes() gives the file as it is, with header checksums that are right unless `sealed` is false.
// What no reader has to look at (the checksums of pages and blocks, the limits of a page, padding,
// unread parts of entries) is wrong throughout.
#ifndef TARN_TESTS_PSTSTORE_RAWIMAGE_H
#define TARN_TESTS_PSTSTORE_RAWIMAGE_H

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/pst/PstBytes.h"
#include "support/pst/PstCodec.h"
#include "support/pst/PstHeader.h"
#include "support/pst/PstStructures.h"

namespace tarn::test {

struct RawImage {
  static constexpr uint64_t kNbtAddress = 0x1000;
  static constexpr uint64_t kBbtAddress = 0x1200;
  static constexpr uint64_t kFirstBlock = 0x2000;
  static constexpr uint64_t kNbtId = 0x31;
  static constexpr uint64_t kBbtId = 0x32;
  static constexpr uint8_t kNbtPage = 0x81;
  static constexpr uint8_t kBbtPage = 0x80;

  bool unicode;
  uint8_t cryptMethod = 0;
  bool sealed = true;
  uint64_t nextBlock = kFirstBlock;
  std::string file;
  std::vector<PstBlockEntry> blocks;
  std::vector<PstNodeEntry> nodes;

  explicit RawImage(bool unicode_) : unicode(unicode_), file(kFirstBlock, '\0') {
    PstHeader header;
    header.version = unicode ? 23 : 14;
    header.bidNextB = 0x1000;
    header.nbtRoot = {kNbtId, kNbtAddress};
    header.bbtRoot = {kBbtId, kBbtAddress};
    write(0, header.write(layout()));
  }

  PstLayout layout() const { return unicode ? PstLayout::Unicode : PstLayout::Ansi; }
  const PstOffsets& offsets() const { return OffsetsOf(layout()); }
  size_t wide() const { return offsets().idWidth; }

  RawImage& put(uint64_t offset, uint64_t value, size_t width) {
    return write(offset, LeBytes(value, width));
  }
  RawImage& write(uint64_t offset, std::string_view bytes) {
    if (file.size() < offset + bytes.size()) file.resize(offset + bytes.size());
    PutBytes(file, offset, bytes);
    return *this;
  }
  RawImage& setVersion(uint16_t version) { return put(10, version, 2); }
  RawImage& setNextBid(uint64_t bid) { return put(offsets().bidNextB, bid, wide()); }
  RawImage& setFileEof(uint64_t eof) { return put(offsets().ibFileEof, eof, wide()); }

  // A page of a tree, of entries and counters.
  RawImage& page(const PstPageRef& ref, uint8_t type, uint8_t level, size_t count,
                 std::string_view entries) {
    std::string body = TreePageBody(layout(), offsets().innerEntry, level, count, entries);
    PutLe(body, offsets().pageCounters + 1, 99, 1);
    PutLe(body, offsets().pageCounters + 2, 77, 1);
    write(ref.ib, PageBytes(layout(), type, ref, body));
    return put(ref.ib + offsets().pageCrc, 0, 4);
  }

  std::string nbtEntry(const PstNodeEntry& node) const {
    return spoilt(EntryBytes(layout(), node), offsets().idWidth == 8 ? 4 : 0);
  }
  std::string bbtEntry(const PstBlockEntry& block) const {
    return spoilt(EntryBytes(layout(), block), offsets().idWidth == 8 ? 4 : 0);
  }
  std::string nonleafEntry(uint64_t key, const PstPageRef& ref) const {
    return InnerEntryBytes(layout(), key, ref);
  }

  // A block at the next free place, with an entry in the block tree. Returns its address.
  uint64_t block(uint64_t id, std::string_view data) {
    const uint64_t address = nextBlock;
    blocks.push_back({id, address, static_cast<uint16_t>(data.size()), 2});
    const std::string bytes = BlockBytes(layout(), {id, address}, data, '\xCC');
    nextBlock += bytes.size();
    write(address, bytes);
    put(nextBlock - offsets().blockTrailer + offsets().blockCrc, 0, 4);
    return address;
  }

  // A block of block ids.
  uint64_t extended(uint64_t id, uint8_t level, uint64_t total, const std::vector<uint64_t>& ids) {
    return block(id, ExtendedBlockData(layout(), level, ids, static_cast<uint32_t>(total)));
  }
  uint64_t subnodeLeaf(uint64_t id, const std::vector<SubnodeEntry>& subnodes) {
    std::string entries;
    for (const SubnodeEntry& entry : subnodes) entries += EntryBytes(layout(), entry);
    return block(id, SubnodeBlockData(layout(), 0, subnodes.size(), entries));
  }
  uint64_t subnodeNonleaf(uint64_t id, const std::vector<std::pair<uint64_t, uint64_t>>& children) {
    std::string entries;
    for (const auto& [key, child] : children) entries += InnerEntryBytes(layout(), key, child);
    return block(id, SubnodeBlockData(layout(), 1, children.size(), entries));
  }

  RawImage& node(uint32_t id, uint64_t data, uint64_t subnodes = 0, uint32_t parent = 0) {
    nodes.push_back({id, parent, data, subnodes});
    return *this;
  }

  // Writes the two leaf pages from the lists of nodes and blocks, in the order of the lists.
  RawImage& trees() {
    std::string nbt;
    for (const PstNodeEntry& entry : nodes) nbt += nbtEntry(entry);
    page({kNbtId, kNbtAddress}, kNbtPage, 0, nodes.size(), nbt);
    std::string bbt;
    for (const PstBlockEntry& entry : blocks) bbt += bbtEntry(entry);
    page({kBbtId, kBbtAddress}, kBbtPage, 0, blocks.size(), bbt);
    return setFileEof(file.size());
  }

  std::string bytes() const {
    RawImage image = *this;
    image.put(offsets().bCryptMethod, cryptMethod, 1);
    if (sealed) RepairPstHeader(image.file, layout());
    return image.file;
  }

 private:
  // The last bytes are no part of the entry.
  static std::string spoilt(std::string entry, size_t unread) {
    return entry.replace(entry.size() - unread, unread, unread, '\xEE');
  }
};

}  // namespace tarn::test

#endif
