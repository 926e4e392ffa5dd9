// NaivePst.h - reads a PST image the long way round and lists everything that is not as published.
//
// Written from MS-PST with offsets of its own, so that it can judge what the writer in
// support/pst makes. It loads the whole image and both trees; no bytes are trusted further than
// that a read outside the image throws std::out_of_range.
#ifndef TARN_TESTS_PSTSTORE_NAIVEPST_H
#define TARN_TESTS_PSTSTORE_NAIVEPST_H

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tarn::test {

struct NaiveNode {
  uint64_t dataBid = 0;
  uint64_t subnodeBid = 0;
  uint32_t parent = 0;
};

struct NaiveBlock {
  uint64_t ib = 0;
  uint16_t cb = 0;
  uint16_t cRef = 0;
};

class NaivePst {
 public:
  explicit NaivePst(std::string_view image);

  bool isUnicode() const { return isUnicode_; }
  // One line for each thing that is wrong, "" for a file as published.
  std::string problems() const;

  const std::map<uint32_t, NaiveNode>& nodes() const { return nodes_; }
  const std::map<uint64_t, NaiveBlock>& blocks() const { return blocks_; }
  unsigned nbtLevels() const { return levels_[0]; }
  unsigned bbtLevels() const { return levels_[1]; }

  // Decoded data, one string for each block of a stream; nothing for id 0.
  std::vector<std::string> pages(uint64_t dataBid) const;
  std::string data(uint64_t dataBid) const;
  std::map<uint32_t, NaiveNode> subnodes(uint64_t subnodeBid) const;

  // Heap and trees on it, with the stride and the count of levels as published.
  std::string allocation(const NaiveNode& node, uint32_t hid) const;
  std::map<uint32_t, std::string> bth(const NaiveNode& node, uint32_t headerHid) const;
  // The value's bytes: 4 in the record, or those of the heap or the subnode.
  std::map<uint16_t, std::string> properties(const NaiveNode& node) const;
  // Row id and the bytes of each row, in the order of the rows.
  std::vector<std::pair<uint32_t, std::string>> rows(const NaiveNode& node) const;

 private:
  uint64_t number(uint64_t offset, size_t width) const;
  void problem(const std::string& text, uint64_t at);
  void checkHeader();
  void checkPage(uint64_t id, uint64_t offset, uint8_t type);
  void checkMaps();
  void checkBlocks();
  void checkReferences();
  void readTree(uint64_t root, bool isBlockTree, unsigned* levels);
  void readPage(uint64_t id, uint64_t offset, bool isBlockTree, int level, uint64_t firstKey);
  void readEntries(uint64_t offset, bool isBlockTree, int level, size_t count);
  void use(uint64_t offset, uint64_t size, const char* what);
  void countChildren(uint64_t bid);
  std::string value(const NaiveNode& node, uint32_t hnid) const;

  std::string_view image_;
  bool isUnicode_ = false;
  size_t width_ = 4;
  std::vector<std::string> problems_;
  std::map<uint32_t, NaiveNode> nodes_;
  std::map<uint64_t, NaiveBlock> blocks_;
  std::map<uint64_t, uint32_t> references_;
  std::map<uint64_t, uint64_t> used_;  // extents: start, end
  unsigned levels_[2] = {0, 0};
  uint64_t highestPage_ = 0;
  mutable std::map<uint64_t, std::vector<std::string>> heaps_;  // pages read before
};

}  // namespace tarn::test

#endif
