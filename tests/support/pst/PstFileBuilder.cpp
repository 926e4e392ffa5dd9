#include "support/pst/PstFileBuilder.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>

#include "support/pst/PstCodec.h"
#include "support/pst/PstHeader.h"

namespace tarn::test {
namespace {

// What a new file starts with (MS-PST 2.2.2.6, rgnid).
std::array<uint32_t, 32> FirstIndexes() {
  std::array<uint32_t, 32> indexes;
  indexes.fill(0x400);
  indexes[0x03] = 0x4000;
  indexes[0x04] = 0x10000;
  indexes[0x08] = 0x8000;
  return indexes;
}

}  // namespace

PstFileBuilder::PstFileBuilder(const PstFileOptions& options)
    : options_(options),
      allocator_(options.layout, options.isCompact, output_, extents_),
      nextIndexes_(FirstIndexes()) {
  reserveLeadingPages();
}

PstFileBuilder::PstFileBuilder(const PstFileOptions& options, const std::filesystem::path& path)
    : options_(options),
      output_(path),
      allocator_(options.layout, options.isCompact, output_, extents_),
      nextIndexes_(FirstIndexes()) {
  reserveLeadingPages();
}

void PstFileBuilder::reserveLeadingPages() {
  for (size_t i = 0; i < options_.leadingPages; ++i) {
    leadingPages_.push_back(allocator_.allocate(kPstPageSize, kPstPageSize));
  }
  std::reverse(leadingPages_.begin(), leadingPages_.end());
}

uint64_t PstFileBuilder::writeBlock(PstExtentKind kind, std::string_view data) {
  if (data.size() > pageSize()) throw std::length_error("block data");
  const uint64_t bid = nextBid(kind != PstExtentKind::DataBlock);
  bidNextB_ += 4;
  const uint16_t cb = static_cast<uint16_t>(data.size());
  const size_t extent = BlockExtent(options_.layout, cb);
  const uint64_t ib = allocator_.allocate(extent, kPstBlockAlignment);
  const bool isEncoded = kind == PstExtentKind::DataBlock;
  const std::string inFile =
      isEncoded ? PstEncode(options_.encoding, bid, data) : std::string(data);
  output_.write(ib, BlockBytes(options_.layout, {bid, ib}, inFile));
  extents_.push_back({ib, bid, cb, kind});
  // The entry of the block itself is the first reference (MS-PST 2.2.2.7.7.3.1).
  blocks_.push_back({bid, ib, cb, 1});
  return bid;
}

uint64_t PstFileBuilder::block(std::string_view data) {
  return writeBlock(PstExtentKind::DataBlock, data);
}

uint64_t PstFileBuilder::internalBlock(PstExtentKind kind, std::string_view data) {
  return writeBlock(kind, data);
}

uint64_t PstFileBuilder::extendedBlock(uint8_t level, std::span<const uint64_t> ids,
                                       uint32_t totalSize) {
  for (const uint64_t id : ids) reference(id);
  return writeBlock(PstExtentKind::ExtendedBlock,
                    ExtendedBlockData(options_.layout, level, ids, totalSize));
}

void PstFileBuilder::reference(uint64_t bid) {
  const uint64_t position = (bid >> 2) - 1;
  if (position >= blocks_.size()) return;
  PstBlockEntry& entry = blocks_[static_cast<size_t>(position)];
  if (entry.bid == (bid & ~uint64_t{1})) ++entry.cRef;
}

uint64_t PstFileBuilder::data(std::string_view bytes, const DataTreeShape& shape) {
  return dataOfPages(PstNodeParts::Stream(bytes, pageSize()).pages, shape);
}

uint64_t PstFileBuilder::dataOfPages(std::span<const std::string> pages,
                                     const DataTreeShape& shape) {
  if (pages.empty()) return 0;
  const size_t room = OffsetsOf(options_.layout).extendedFanOut;
  const size_t fanOut = shape.fanOut == 0 ? room : std::min(shape.fanOut, room);
  const bool hasTwoLevels = shape.minLevels >= 2 || pages.size() > fanOut;
  std::vector<uint64_t> ids;
  std::vector<uint32_t> sizes;
  for (size_t i = 0; i < pages.size(); ++i) {
    const bool isHole =
        shape.pageHoles.contains(i) || (hasTwoLevels && shape.childHoles.contains(i / fanOut));
    ids.push_back(isHole ? 0 : block(pages[i]));
    sizes.push_back(static_cast<uint32_t>(pages[i].size()));
  }
  if (ids.size() == 1 && shape.minLevels == 0 && ids.front() != 0) return ids.front();
  if (!hasTwoLevels) return extendedLevel(1, ids, sizes, shape.totalSize);

  std::vector<uint64_t> children;
  std::vector<uint32_t> childSizes;
  for (size_t i = 0; i < ids.size(); i += fanOut) {
    const size_t count = std::min(fanOut, ids.size() - i);
    const auto below = std::span(sizes).subspan(i, count);
    childSizes.push_back(std::accumulate(below.begin(), below.end(), uint32_t{0}));
    const bool isHole = shape.childHoles.contains(i / fanOut);
    children.push_back(isHole ? 0 : extendedLevel(1, std::span(ids).subspan(i, count), below, {}));
  }
  if (children.size() > fanOut) throw std::length_error("stream beyond two levels");
  return extendedLevel(2, children, childSizes, shape.totalSize);
}

uint64_t PstFileBuilder::extendedLevel(uint8_t level, std::span<const uint64_t> ids,
                                       std::span<const uint32_t> sizes,
                                       std::optional<uint32_t> totalSize) {
  const uint32_t sum = std::accumulate(sizes.begin(), sizes.end(), uint32_t{0});
  return extendedBlock(level, ids, totalSize.value_or(sum));
}

uint64_t PstFileBuilder::subnodes(std::span<const SubnodeEntry> entries,
                                  const SubnodeTreeShape& shape) {
  if (entries.empty()) return 0;
  const PstOffsets& at = OffsetsOf(options_.layout);
  struct Child {
    uint32_t nid;
    uint64_t bid;
  };
  std::vector<Child> level;
  const auto add = [&](uint32_t nid, uint8_t depth, size_t count, const std::string& body) {
    const std::string data = SubnodeBlockData(options_.layout, depth, count, body);
    level.push_back({nid, writeBlock(PstExtentKind::SubnodeBlock, data)});
  };
  const auto limit = [&](size_t wanted, size_t entrySize, size_t least) {
    const size_t room = (at.maxBlockData - at.subnodeEntries) / entrySize;
    return wanted == 0 ? room : std::clamp(wanted, least, room);
  };

  const size_t leafFanOut = limit(shape.leafFanOut, at.subnodeLeafEntry, 1);
  for (size_t i = 0; i < entries.size(); i += leafFanOut) {
    std::string body;
    const auto group = entries.subspan(i, std::min(leafFanOut, entries.size() - i));
    for (const SubnodeEntry& entry : group) {
      body += EntryBytes(options_.layout, entry);
      reference(entry.dataBid);
      reference(entry.subnodeBid);
    }
    add(group.front().nid, 0, group.size(), body);
  }
  const size_t innerFanOut = limit(shape.innerFanOut, at.subnodeInnerEntry, 2);
  for (uint8_t depth = 1; level.size() > 1 || depth < shape.minLevels; ++depth) {
    std::vector<Child> below;
    below.swap(level);
    for (size_t i = 0; i < below.size(); i += innerFanOut) {
      std::string body;
      const size_t count = std::min(innerFanOut, below.size() - i);
      for (const Child& child : std::span(below).subspan(i, count)) {
        body += InnerEntryBytes(options_.layout, child.nid, child.bid);
        reference(child.bid);
      }
      add(below[i].nid, depth, count, body);
    }
  }
  return level.front().bid;
}

uint64_t PstFileBuilder::writeParts(const PstNodeParts& parts, uint64_t* subnodeBid) {
  const uint64_t dataBid = dataOfPages(parts.pages, parts.dataShape);
  std::vector<SubnodeEntry> entries;
  for (const PstSubnode& subnode : parts.subnodes) {
    SubnodeEntry entry = {subnode.nid, 0, 0};
    entry.dataBid = writeParts(subnode.parts, &entry.subnodeBid);
    entries.push_back(entry);
  }
  std::stable_sort(entries.begin(), entries.end(),
                   [](const auto& a, const auto& b) { return a.nid < b.nid; });
  *subnodeBid = subnodes(entries, parts.subnodeShape);
  return dataBid;
}

void PstFileBuilder::node(uint32_t nid, uint64_t dataBid, uint64_t subnodeBid, uint32_t parent) {
  reference(dataBid);
  reference(subnodeBid);
  nodes_.push_back({nid, parent, dataBid, subnodeBid});
  uint32_t& next = nextIndexes_[nid & 0x1F];
  next = std::max(next, nid >> 5);
}

void PstFileBuilder::node(uint32_t nid, const PstNodeParts& parts, uint32_t parent) {
  uint64_t subnodeBid = 0;
  const uint64_t dataBid = writeParts(parts, &subnodeBid);
  node(nid, dataBid, subnodeBid, parent);
}

PstPageRef PstFileBuilder::reservePage() {
  return {bidNextP_++, allocator_.allocate(kPstPageSize, kPstPageSize)};
}

PstPageRef PstFileBuilder::takeTreePage() {
  if (leadingPages_.empty()) return reservePage();
  const uint64_t offset = leadingPages_.back();
  leadingPages_.pop_back();
  return {bidNextP_++, offset};
}

void PstFileBuilder::writePage(const PstPageRef& page, PstExtentKind kind, std::string_view body) {
  output_.write(page.ib, PageBytes(options_.layout, PstPageType(kind), page, body));
  extents_.push_back({page.ib, page.bid, kPstPageSize, kind});
}

void PstFileBuilder::finish() {
  if (isFinished_) return;
  isFinished_ = true;
  std::stable_sort(nodes_.begin(), nodes_.end(),
                   [](const auto& a, const auto& b) { return a.nid < b.nid; });
  blocks_.insert(blocks_.end(), extraBlocks_.begin(), extraBlocks_.end());
  std::stable_sort(blocks_.begin(), blocks_.end(),
                   [](const auto& a, const auto& b) { return a.bid < b.bid; });

  const auto storeOf = [this](PstExtentKind kind) {
    return PstPageStore{[this] { return takeTreePage(); },
                        [this, kind](const PstPageRef& page, std::string_view body) {
                          writePage(page, kind, body);
                        }};
  };
  const PstPageRef nbt =
      WriteNodeTree(options_.layout, options_.nbt, nodes_, storeOf(PstExtentKind::NbtPage));
  const PstPageRef bbt =
      WriteBlockTree(options_.layout, options_.bbt, blocks_, storeOf(PstExtentKind::BbtPage));
  if (!nbtRoot_) nbtRoot_ = nbt;
  if (!bbtRoot_) bbtRoot_ = bbt;
  allocator_.finish(options_.isTrimmed, bidNextP_++);
  writeHeader();
  output_.finish(allocator_.fileEnd());
}

void PstFileBuilder::writeHeader() {
  const uint16_t usual = options_.layout == PstLayout::Ansi ? 15 : 23;
  PstHeader header;
  header.version = options_.version == 0 ? usual : options_.version;
  header.encoding = options_.encoding;
  header.bidNextB = bidNextB_;
  header.bidNextP = bidNextP_;
  header.nodeIndexes = nextIndexes_;
  header.fileEnd = allocator_.fileEnd();
  header.lastMap = allocator_.lastMap();
  header.freeBytes = allocator_.freeBytes();
  header.nbtRoot = *nbtRoot_;
  header.bbtRoot = *bbtRoot_;
  output_.write(0, header.write(options_.layout));
}

const std::string& PstFileBuilder::bytes() {
  finish();
  return output_.bytes();
}

const std::vector<PstExtent>& PstFileBuilder::extents() {
  finish();
  return extents_;
}

}  // namespace tarn::test
