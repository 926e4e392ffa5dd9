#include "NaivePst.h"

#include <algorithm>
#include <set>
#include <stdexcept>

#include "support/pst/CryptTables.h"

namespace tarn::test {
namespace {

constexpr uint64_t kInterval = 253952;

uint64_t Number(std::string_view bytes, uint64_t offset, size_t width) {
  if (offset > bytes.size() || width > bytes.size() - offset) throw std::out_of_range("number");
  uint64_t value = 0;
  for (size_t i = width; i-- > 0;) value = value << 8 | static_cast<uint8_t>(bytes[offset + i]);
  return value;
}

uint32_t Crc(std::string_view bytes) {
  uint32_t crc = 0;
  for (char c : bytes) {
    crc ^= static_cast<uint8_t>(c);
    for (int bit = 0; bit < 8; ++bit) crc = (crc & 1) != 0 ? crc >> 1 ^ 0xEDB88320 : crc >> 1;
  }
  return crc;
}

uint64_t Signature(uint64_t id, uint64_t offset) {
  const uint64_t x = (id ^ offset) & 0xFFFFFFFF;
  return (x >> 16 ^ x) & 0xFFFF;
}

std::string Decode(uint8_t method, uint64_t bid, std::string_view bytes) {
  std::string result(bytes);
  uint16_t w = static_cast<uint16_t>(bid ^ bid >> 16);
  for (char& c : result) {
    uint8_t b = static_cast<uint8_t>(c);
    if (method == 1) b = kMpbbI[b];
    if (method == 2) {
      const uint8_t low = static_cast<uint8_t>(w);
      const uint8_t high = static_cast<uint8_t>(w >> 8);
      b = kMpbbR[static_cast<uint8_t>(b + low)];
      b = kMpbbS[static_cast<uint8_t>(b + high)];
      b = static_cast<uint8_t>(kMpbbI[static_cast<uint8_t>(b - high)] - low);
      ++w;
    }
    c = static_cast<char>(b);
  }
  return result;
}

}  // namespace

NaivePst::NaivePst(std::string_view image) : image_(image) {
  isUnicode_ = number(10, 2) >= 20;
  width_ = isUnicode_ ? 8 : 4;
  checkHeader();
  const uint64_t nbt = isUnicode_ ? 216 : 184;
  readTree(nbt, false, &levels_[0]);
  readTree(nbt + 2 * width_, true, &levels_[1]);
  checkBlocks();
  checkReferences();
  checkMaps();
}

uint64_t NaivePst::number(uint64_t offset, size_t width) const {
  return Number(image_, offset, width);
}

void NaivePst::problem(const std::string& text, uint64_t at) {
  problems_.push_back(text + " at " + std::to_string(at));
}

std::string NaivePst::problems() const {
  std::string all;
  for (const std::string& line : problems_) all += line + "\n";
  return all;
}

void NaivePst::checkHeader() {
  const uint64_t version = number(10, 2);
  if (image_.substr(0, 4) != "!BDN") problem("magic", 0);
  if (image_.substr(8, 2) != "SM") problem("client", 8);
  if (version != 14 && version != 15 && version != 23) problem("version", 10);
  if (number(12, 2) != 19 || number(14, 2) != 0x0101) problem("client version", 12);
  if (number(4, 4) != Crc(image_.substr(8, 471))) problem("partial CRC", 4);
  if (isUnicode_ && number(524, 4) != Crc(image_.substr(8, 516))) problem("full CRC", 524);
  if (number(isUnicode_ ? 512 : 460, 1) != 0x80) problem("sentinel", 0);
  if (number(isUnicode_ ? 184 : 168, width_) != image_.size()) problem("end of file", 184);
  if (number(isUnicode_ ? 248 : 200, 1) != 2) problem("maps not valid", 248);
  const std::string_view maps = image_.substr(isUnicode_ ? 256 : 204, 256);
  if (maps.find_first_not_of('\xFF') != std::string_view::npos) problem("rgbFM, rgbFP", 256);
}

void NaivePst::checkPage(uint64_t id, uint64_t offset, uint8_t type) {
  const uint64_t trailer = offset + (isUnicode_ ? 496 : 500);
  if (offset % 512 != 0) problem("page not aligned", offset);
  if (number(trailer, 1) != type || number(trailer + 1, 1) != type) problem("type", offset);
  if (number(offset + 504, width_) != id) problem("page id", offset);
  if (number(trailer + 2, 2) != Signature(id, offset)) problem("page signature", offset);
  const uint64_t crc = number(isUnicode_ ? trailer + 4 : trailer + 8, 4);
  if (crc != Crc(image_.substr(offset, trailer - offset))) problem("page CRC", offset);
}

void NaivePst::use(uint64_t offset, uint64_t size, const char* what) {
  const auto above = used_.lower_bound(offset);
  if (above != used_.end() && above->first < offset + size) problem("overlap", offset);
  if (above != used_.begin() && std::prev(above)->second > offset) problem("overlap", offset);
  if (offset / 64 * 64 != offset || offset + size > image_.size()) problem(what, offset);
  used_[offset] = offset + size;
}

void NaivePst::checkMaps() {
  const uint64_t last = number(isUnicode_ ? 192 : 172, width_);
  uint64_t free = 0;
  uint64_t interval = 0;
  uint64_t map = 0x4400;
  for (; map < image_.size(); map += kInterval, ++interval) {
    uint64_t page = map;
    std::string maps = "\x84";
    if (interval % 8 == 0) maps += '\x83';
    if (interval >= 128 && (interval - 128) % 496 == 0) maps += '\x82';
    for (char type : maps) {
      checkPage(page, page, static_cast<uint8_t>(type));
      if (number(page + (isUnicode_ ? 498 : 502), 2) != 0) problem("map signature", page);
      use(page, 512, "map");
      page += 512;
    }
    for (uint64_t slot = 0; slot < 3968; ++slot) {
      const uint64_t at = map + slot * 64;
      const uint64_t byte = number(map + (isUnicode_ ? 0 : 4) + slot / 8, 1);
      const bool isMarked = (byte & (0x80U >> slot % 8)) != 0;
      const auto above = used_.upper_bound(at);
      const bool isUsed = above != used_.begin() && std::prev(above)->second > at;
      if (isMarked != (isUsed || at >= image_.size())) problem("map bit", at);
      if (!isMarked) free += 64;
    }
  }
  if (last != map - kInterval) problem("last map", last);
  if (number(isUnicode_ ? 200 : 176, width_) != free) problem("free bytes", free);
  checkPage(number(0x4200 + 504, width_), 0x4200, 0x86);
  highestPage_ = std::max(highestPage_, number(0x4200 + 504, width_));
  for (const auto& [start, end] : used_) {
    if ((start - 0x4400) / kInterval != (end - 1 - 0x4400) / kInterval) problem("crosses", start);
  }
  if (number(isUnicode_ ? 32 : 28, width_) <= highestPage_) problem("bidNextP", 32);
  const uint64_t nextB = number(isUnicode_ ? 516 : 24, width_);
  if (!blocks_.empty() && nextB <= blocks_.rbegin()->first) problem("bidNextB", 24);
}

void NaivePst::readTree(uint64_t root, bool isBlockTree, unsigned* levels) {
  const uint64_t offset = number(root + width_, width_);
  const int level = static_cast<int>(number(offset + (isUnicode_ ? 491 : 499), 1));
  *levels = static_cast<unsigned>(level) + 1;
  readPage(number(root, width_), offset, isBlockTree, level, 0);
}

void NaivePst::readPage(uint64_t id, uint64_t offset, bool isBlockTree, int level,
                        uint64_t firstKey) {
  checkPage(id, offset, isBlockTree ? 0x80 : 0x81);
  use(offset, 512, "page");
  highestPage_ = std::max(highestPage_, id);
  const uint64_t counters = offset + (isUnicode_ ? 488 : 496);
  const uint64_t count = number(counters, 1);
  const uint64_t size = number(counters + 2, 1);
  const uint64_t leafSize = isBlockTree ? (isUnicode_ ? 24 : 12) : (isUnicode_ ? 32 : 16);
  if (number(counters + 3, 1) != static_cast<uint64_t>(level)) problem("level", offset);
  if (size != (level == 0 ? leafSize : 3 * width_)) problem("entry size", offset);
  if (number(counters + 1, 1) != (counters - offset) / size) problem("entry limit", offset);
  if (count > number(counters + 1, 1)) problem("entry count", offset);
  if (firstKey != 0 && number(offset, width_) != firstKey) problem("separator", offset);
  readEntries(offset, isBlockTree, level, count);
}

void NaivePst::readEntries(uint64_t offset, bool isBlockTree, int level, size_t count) {
  const size_t size =
      level > 0 ? 3 * width_ : (isUnicode_ ? (isBlockTree ? 24 : 32) : (isBlockTree ? 12 : 16));
  uint64_t previous = 0;
  for (size_t i = 0; i < count; ++i) {
    const uint64_t entry = offset + i * size;
    const uint64_t key = number(entry, width_);
    if (i > 0 && key <= previous) problem("key order", entry);
    previous = key;
    const uint64_t second = number(entry + width_, width_);
    if (level > 0) {
      readPage(second, number(entry + 2 * width_, width_), isBlockTree, level - 1, key);
    } else if (isBlockTree) {
      blocks_[key] = {second, static_cast<uint16_t>(number(entry + 2 * width_, 2)),
                      static_cast<uint16_t>(number(entry + 2 * width_ + 2, 2))};
    } else {
      nodes_[static_cast<uint32_t>(key)] = {second, number(entry + 2 * width_, width_),
                                            static_cast<uint32_t>(number(entry + 3 * width_, 4))};
    }
  }
}

void NaivePst::checkBlocks() {
  const size_t trailerSize = isUnicode_ ? 16 : 12;
  for (const auto& [bid, block] : blocks_) {
    if ((bid & 1) != 0) problem("reserved bit", bid);
    const uint64_t extent = (block.cb + trailerSize + 63) / 64 * 64;
    if (extent > 8192) problem("block size", bid);
    use(block.ib, extent, "block");
    const uint64_t trailer = block.ib + extent - trailerSize;
    if (number(trailer, 2) != block.cb) problem("block cb", bid);
    if (number(trailer + 2, 2) != Signature(bid, block.ib)) problem("block signature", bid);
    if (number(trailer + (isUnicode_ ? 8 : 4), width_) != bid) problem("block id", bid);
    const uint64_t crc = number(trailer + (isUnicode_ ? 4 : 8), 4);
    if (crc != Crc(image_.substr(block.ib, block.cb))) problem("block CRC", bid);
  }
}

// What an internal block names, each with one more reference.
void NaivePst::countChildren(uint64_t bid) {
  const NaiveBlock& block = blocks_.at(bid);
  const uint64_t count = number(block.ib + 2, 2);
  const bool isData = number(block.ib, 1) == 1;
  const uint64_t level = number(block.ib + 1, 1);
  if (isData && level != 1 && level != 2) problem("XBLOCK level", bid);
  if (!isData && (number(block.ib, 1) != 2 || level > 1)) problem("internal block", bid);
  const uint64_t start = block.ib + (isData || isUnicode_ ? 8 : 4);
  const uint64_t size = isData ? width_ : width_ * (level == 0 ? 3 : 2);
  if (start - block.ib + count * size != block.cb) problem("entries of internal block", bid);
  uint64_t total = 0;
  for (uint64_t i = 0; i < count; ++i) {
    const uint64_t entry = start + i * size;
    for (uint64_t at = isData ? 0 : width_; at < size; at += width_) {
      const uint64_t child = number(entry + at, width_);
      if (child == 0) continue;
      ++references_[child & ~uint64_t{1}];
      const NaiveBlock& found = blocks_.at(child & ~uint64_t{1});
      total += level == 2 ? number(found.ib + 4, 4) : found.cb;
    }
    if (!isData && i > 0 && number(entry, width_) <= number(entry - size, width_)) {
      problem("subnode order", bid);
    }
  }
  if (isData && number(block.ib + 4, 4) != total) problem("lcbTotal", bid);
}

void NaivePst::checkReferences() {
  for (const auto& [nid, node] : nodes_) {
    if (node.dataBid != 0) ++references_[node.dataBid & ~uint64_t{1}];
    if (node.subnodeBid != 0) ++references_[node.subnodeBid & ~uint64_t{1}];
  }
  for (const auto& [bid, block] : blocks_) {
    if ((bid & 2) != 0) countChildren(bid);
  }
  for (const auto& [bid, count] : references_) {
    if (!blocks_.contains(bid)) problem("missing block", bid);
  }
  for (const auto& [bid, block] : blocks_) {
    if (block.cRef != 1 + references_[bid]) problem("references", bid);
  }
}

std::vector<std::string> NaivePst::pages(uint64_t dataBid) const {
  if (dataBid == 0) return {};
  const NaiveBlock& block = blocks_.at(dataBid & ~uint64_t{1});
  const std::string_view bytes = image_.substr(block.ib, block.cb);
  const uint8_t method = static_cast<uint8_t>(number(isUnicode_ ? 513 : 461, 1));
  if ((dataBid & 2) == 0) return {Decode(method, dataBid, bytes)};
  std::vector<std::string> result;
  for (uint64_t i = 0; i < Number(bytes, 2, 2); ++i) {
    for (std::string& page : pages(Number(bytes, 8 + i * width_, width_))) {
      result.push_back(std::move(page));
    }
  }
  return result;
}

std::string NaivePst::data(uint64_t dataBid) const {
  std::string all;
  for (const std::string& page : pages(dataBid)) all += page;
  return all;
}

std::map<uint32_t, NaiveNode> NaivePst::subnodes(uint64_t subnodeBid) const {
  std::map<uint32_t, NaiveNode> result;
  if (subnodeBid == 0) return result;
  const NaiveBlock& block = blocks_.at(subnodeBid & ~uint64_t{1});
  const bool isLeaf = number(block.ib + 1, 1) == 0;
  for (uint64_t i = 0; i < number(block.ib + 2, 2); ++i) {
    const uint64_t entry = block.ib + (isUnicode_ ? 8 : 4) + i * width_ * (isLeaf ? 3 : 2);
    const uint64_t second = number(entry + width_, width_);
    if (isLeaf) {
      result[static_cast<uint32_t>(number(entry, 4))] = {second, number(entry + 2 * width_, width_),
                                                         0};
    } else {
      result.merge(subnodes(second));
    }
  }
  return result;
}

std::string NaivePst::allocation(const NaiveNode& node, uint32_t hid) const {
  if (hid == 0) return {};
  std::vector<std::string>& heap = heaps_[node.dataBid];
  if (heap.empty()) heap = pages(node.dataBid);
  const std::string& page = heap.at(hid >> 16);
  const uint64_t map = Number(page, 0, 2);
  const uint64_t index = (hid >> 5) & 0x7FF;
  if (map % 2 != 0 || index == 0 || index > Number(page, map, 2)) {
    throw std::out_of_range("heap id");
  }
  const uint64_t start = Number(page, map + 4 + 2 * (index - 1), 2);
  return page.substr(start, Number(page, map + 4 + 2 * index, 2) - start);
}

std::map<uint32_t, std::string> NaivePst::bth(const NaiveNode& node, uint32_t headerHid) const {
  const std::string header = allocation(node, headerHid);
  if (header.size() != 8 || Number(header, 0, 1) != 0xB5) throw std::out_of_range("BTH header");
  const size_t keySize = Number(header, 1, 1);
  const size_t entrySize = Number(header, 2, 1);
  std::vector<uint32_t> level = {static_cast<uint32_t>(Number(header, 4, 4))};
  for (uint64_t depth = Number(header, 3, 1); depth > 0; --depth) {
    std::vector<uint32_t> below;
    for (uint32_t hid : level) {
      const std::string records = allocation(node, hid);
      for (size_t at = 0; at < records.size(); at += keySize + 4) {
        below.push_back(static_cast<uint32_t>(Number(records, at + keySize, 4)));
      }
    }
    level = below;
  }
  std::map<uint32_t, std::string> result;
  for (uint32_t hid : level) {
    const std::string records = allocation(node, hid);
    for (size_t at = 0; at < records.size(); at += keySize + entrySize) {
      result[static_cast<uint32_t>(Number(records, at, keySize))] =
          records.substr(at + keySize, entrySize);
    }
  }
  return result;
}

std::string NaivePst::value(const NaiveNode& node, uint32_t hnid) const {
  if ((hnid & 0x1F) == 0) return allocation(node, hnid);
  return data(subnodes(node.subnodeBid).at(hnid).dataBid);
}

std::map<uint16_t, std::string> NaivePst::properties(const NaiveNode& node) const {
  const std::string first = pages(node.dataBid).at(0);
  if (Number(first, 2, 2) != 0xBCEC) throw std::out_of_range("no property context");
  std::map<uint16_t, std::string> result;
  for (const auto& [id, record] : bth(node, static_cast<uint32_t>(Number(first, 4, 4)))) {
    const uint64_t type = Number(record, 0, 2);
    const bool isInline = type == 2 || type == 3 || type == 4 || type == 0xA || type == 0xB;
    const uint32_t hnid = static_cast<uint32_t>(Number(record, 2, 4));
    result[static_cast<uint16_t>(id)] = isInline ? record.substr(2, 4) : value(node, hnid);
  }
  return result;
}

std::vector<std::pair<uint32_t, std::string>> NaivePst::rows(const NaiveNode& node) const {
  const std::string first = pages(node.dataBid).at(0);
  if (Number(first, 2, 2) != 0x7CEC) throw std::out_of_range("no table context");
  const std::string info = allocation(node, static_cast<uint32_t>(Number(first, 4, 4)));
  const size_t rowSize = Number(info, 8, 2);
  const uint32_t hnid = static_cast<uint32_t>(Number(info, 14, 4));
  std::vector<std::string> blocks = {allocation(node, (hnid & 0x1F) == 0 ? hnid : 0)};
  if ((hnid & 0x1F) != 0) blocks = pages(subnodes(node.subnodeBid).at(hnid).dataBid);
  std::vector<std::pair<uint32_t, std::string>> result;
  for (const std::string& block : blocks) {
    for (size_t at = 0; at + rowSize <= block.size(); at += rowSize) {
      const std::string row = block.substr(at, rowSize);
      result.emplace_back(static_cast<uint32_t>(Number(row, 0, 4)), row);
    }
  }
  const auto index = bth(node, static_cast<uint32_t>(Number(info, 10, 4)));
  if (index.size() != result.size()) throw std::out_of_range("row index");
  for (const auto& [rowId, position] : index) {
    if (result.at(Number(position, 0, position.size())).first != rowId) {
      throw std::out_of_range("row index entry");
    }
  }
  return result;
}

}  // namespace tarn::test
