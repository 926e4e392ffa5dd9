// RawImage.h - stores written byte by byte, for tests that say exactly what stands where.
//
// An image has one leaf page for each of its two trees, unless a test puts other pages there, and
// its blocks from 0x2000 on. Everything can be overwritten behind the builder's back: bytes() gives
// the file as it is, with header checksums that are right unless `sealed` is false.
#ifndef TARN_TESTS_PSTSTORE_RAWIMAGE_H
#define TARN_TESTS_PSTSTORE_RAWIMAGE_H

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "Tarnbase/PlainKernel.h"
#include "pststore/DbContext.h"
#include "support/FaultSweep.h"
#include "support/TempDirectory.h"

namespace tarn::test {

// The system has names like these, too.
using pststore::ulong;
using pststore::ulonglong;
using pststore::ushort;

// Appends little-endian numbers.
class Bytes {
 public:
  Bytes& put(uint64_t value, size_t width) {
    for (size_t i = 0; i < width; ++i) text_ += static_cast<char>(value >> (8 * i) & 0xFF);
    return *this;
  }
  Bytes& u8(uint64_t value) { return put(value, 1); }
  Bytes& u16(uint64_t value) { return put(value, 2); }
  Bytes& u32(uint64_t value) { return put(value, 4); }
  Bytes& u64(uint64_t value) { return put(value, 8); }
  operator std::string() const { return text_; }

 private:
  std::string text_;
};

struct RawImage {
  static constexpr uint64_t kNbtAddress = 0x1000;
  static constexpr uint64_t kBbtAddress = 0x1200;
  static constexpr uint64_t kFirstBlock = 0x2000;
  static constexpr uint64_t kNbtId = 0x31;
  static constexpr uint64_t kBbtId = 0x32;

  struct Block {
    uint64_t id;
    uint64_t address;
    size_t size;
  };
  struct Node {
    uint32_t id;
    uint64_t data;
    uint64_t subnodes;
    uint32_t parent;
  };

  bool unicode;
  uint8_t cryptMethod = 0;
  bool sealed = true;
  uint64_t nextBlock = kFirstBlock;
  std::string file;
  std::vector<Block> blocks;
  std::vector<Node> nodes;

  explicit RawImage(bool unicode_) : unicode(unicode_), file(kFirstBlock, '\0') {
    put(0, 0x4E444221, 4);          // dwMagic
    put(8, 0x4D53, 2);              // wMagicClient
    put(10, unicode ? 23 : 14, 2);  // wVer
    if (unicode) {
      put(216, kNbtId, 8).put(224, kNbtAddress, 8);
      put(232, kBbtId, 8).put(240, kBbtAddress, 8);
      put(516, 0x1000, 8);  // bidNextB
    } else {
      put(184, kNbtId, 4).put(188, kNbtAddress, 4);
      put(192, kBbtId, 4).put(196, kBbtAddress, 4);
      put(24, 0x1000, 4);  // bidNextB
    }
  }

  size_t wide() const { return unicode ? 8 : 4; }

  RawImage& put(uint64_t offset, uint64_t value, size_t width) {
    return write(offset, Bytes().put(value, width));
  }
  RawImage& write(uint64_t offset, const std::string& bytes) {
    if (file.size() < offset + bytes.size()) file.resize(offset + bytes.size());
    file.replace(offset, bytes.size(), bytes);
    return *this;
  }
  RawImage& setFileEof(uint64_t eof) { return put(unicode ? 184 : 168, eof, wide()); }

  static uint16_t signature(uint64_t id, uint64_t address) {
    const uint64_t x = id ^ address;
    return static_cast<uint16_t>((x ^ (x >> 16)) & 0xFFFF);
  }

  // A page of a tree: entries from offset 0, counters, trailer.
  RawImage& page(uint64_t address, uint64_t id, uint8_t type, uint8_t level, uint8_t count,
                 const std::string& entries) {
    write(address, std::string(512, '\0'));
    write(address, entries);
    const uint64_t counters = address + (unicode ? 488 : 496);
    put(counters, count, 1).put(counters + 1, 99, 1).put(counters + 2, 77, 1);
    put(counters + 3, level, 1);
    const uint64_t trailer = address + (unicode ? 496 : 500);
    put(trailer, type, 1).put(trailer + 1, type, 1).put(trailer + 2, signature(id, address), 2);
    return put(address + 504, id, wide());
  }

  std::string nbtEntry(const Node& node) const {
    Bytes entry;
    entry.put(node.id, wide()).put(node.data, wide()).put(node.subnodes, wide()).u32(node.parent);
    return unicode ? entry.u32(0xEEEEEEEE) : entry;
  }
  std::string bbtEntry(const Block& block) const {
    Bytes entry;
    entry.put(block.id, wide()).put(block.address, wide()).u16(block.size).u16(2);
    return unicode ? entry.u32(0xEEEEEEEE) : entry;
  }
  std::string nonleafEntry(uint64_t key, uint64_t id, uint64_t address) const {
    return Bytes().put(key, wide()).put(id, wide()).put(address, wide());
  }

  static uint64_t extentOf(uint64_t size, bool unicode) {
    return (size + (unicode ? 16 : 12) + 63) / 64 * 64;
  }

  // A block at the next free place, with an entry in the block tree. Returns its address.
  uint64_t block(uint64_t id, const std::string& data) {
    const uint64_t address = nextBlock;
    blocks.push_back({id, address, data.size()});
    nextBlock += extentOf(data.size(), unicode);
    write(address, std::string(extentOf(data.size(), unicode), '\xCC'));
    write(address, data);
    if (unicode) {
      put(nextBlock - 16, data.size(), 2).put(nextBlock - 14, signature(id, address), 2);
      put(nextBlock - 8, id, 8);
    } else {
      put(nextBlock - 12, data.size(), 2).put(nextBlock - 10, signature(id, address), 2);
      put(nextBlock - 8, id, 4);
    }
    return address;
  }

  // A block of block ids.
  uint64_t extended(uint64_t id, uint8_t level, uint32_t total, const std::vector<uint64_t>& ids) {
    Bytes data;
    data.u8(1).u8(level).u16(ids.size()).u32(total);
    for (const uint64_t child : ids) data.put(child, wide());
    return block(id, data);
  }

  // The beginning of a block of subnodes.
  Bytes subnodeHead(uint8_t level, uint16_t count) const {
    Bytes head;
    head.u8(2).u8(level).u16(count);
    return unicode ? head.u32(0) : head;
  }
  uint64_t subnodeLeaf(uint64_t id, const std::vector<Node>& subnodes) {
    Bytes data = subnodeHead(0, static_cast<uint16_t>(subnodes.size()));
    for (const Node& node : subnodes) {
      data.put(node.id, wide()).put(node.data, wide()).put(node.subnodes, wide());
    }
    return block(id, data);
  }
  uint64_t subnodeNonleaf(uint64_t id, const std::vector<std::pair<uint64_t, uint64_t>>& children) {
    Bytes data = subnodeHead(1, static_cast<uint16_t>(children.size()));
    for (const auto& [key, child] : children) data.put(key, wide()).put(child, wide());
    return block(id, data);
  }

  RawImage& node(uint32_t id, uint64_t data, uint64_t subnodes = 0, uint32_t parent = 0) {
    nodes.push_back({id, data, subnodes, parent});
    return *this;
  }

  // Writes the two leaf pages from the lists of nodes and blocks, in the order of the lists.
  RawImage& trees() {
    std::string nbt;
    for (const Node& entry : nodes) nbt += nbtEntry(entry);
    page(kNbtAddress, kNbtId, 0x81, 0, static_cast<uint8_t>(nodes.size()), nbt);
    std::string bbt;
    for (const Block& entry : blocks) bbt += bbtEntry(entry);
    page(kBbtAddress, kBbtId, 0x80, 0, static_cast<uint8_t>(blocks.size()), bbt);
    return setFileEof(file.size());
  }

  static uint32_t crc(const std::string& bytes) {
    uint32_t crc = 0;
    for (const char byte : bytes) {
      crc ^= static_cast<uint8_t>(byte);
      for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
    }
    return crc;
  }

  std::string bytes() const {
    RawImage image = *this;
    image.put(unicode ? 513 : 461, cryptMethod, 1);
    if (sealed) {
      image.put(4, crc(image.file.substr(8, 471)), 4);
      if (unicode) image.put(524, crc(image.file.substr(8, 516)), 4);
    }
    return image.file;
  }
};

// The file of an image, and the store in it.
class OpenedImage {
 public:
  explicit OpenedImage(const RawImage& image) : path_(directory_.write("a.pst", image.bytes())) {}

  std::shared_ptr<pststore::db_context> open() const {
    return pststore::open_database(path_.u16string().c_str());
  }

 private:
  TempDirectory directory_;
  std::filesystem::path path_;
};

// Runs the action and asserts that it throws exactly this type with this text.
template <typename Exception, typename Action>
void ExpectThrow(const std::string& text, const Action& action) {
  try {
    action();
    ADD_FAILURE() << "nothing thrown; expected " << text;
  } catch (const std::exception& exception) {
    EXPECT_EQ(text, exception.what());
    EXPECT_EQ(typeid(Exception), typeid(exception)) << exception.what();
  }
}

// How many calls of a fault group the action makes: it throws when any of them fails.
template <typename Action>
uint64_t CallsOf(int32_t group, const Action& action) {
  return FailInTurn(group, [&](FaultedWork& faulted) {
    bool failed = false;
    try {
      faulted(action);
    } catch (const std::exception&) {
      failed = true;
    }
    EXPECT_EQ(failed, faulted.isReached());
  });
}

// The same for an action on a store that was just opened; opening does not count.
template <typename Action>
uint64_t CallsOf(int32_t group, const OpenedImage& file, const Action& action) {
  return SweepFaults(group, [&](FaultedWork& faulted) {
    const auto context = file.open();
    bool failed = false;
    try {
      faulted([&] { action(context); });
    } catch (const std::exception&) {
      failed = true;
    }
    EXPECT_EQ(failed, faulted.isReached());
  });
}

// The tests of both layouts.
class BothLayouts : public ::testing::TestWithParam<bool> {
 protected:
  bool unicode() const { return GetParam(); }
  uint64_t maxData() const { return unicode() ? 8176 : 8180; }
  uint64_t maxChildren() const { return unicode() ? 1021 : 1019; }
};

inline std::string LayoutName(const ::testing::TestParamInfo<bool>& info) {
  return info.param ? "Unicode" : "Ansi";
}

}  // namespace tarn::test

#endif
