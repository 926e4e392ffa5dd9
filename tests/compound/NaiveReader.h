// NaiveReader.h - what is to be read of a compound file, worked out the long way: every table and
// the directory as plain lists, chains with a search over what they hold, one block at a time, and
// no bounds.
#ifndef TARN_TESTS_COMPOUND_NAIVEREADER_H
#define TARN_TESTS_COMPOUND_NAIVEREADER_H

#include <cstdint>
#include <string>
#include <vector>

namespace tarn::test {

class NaiveReader {
 public:
  using Numbers = std::vector<uint64_t>;
  struct Entry {
    std::string name;
    bool valid = false;
    bool isDirectory = false;
    uint64_t size = 0;
    uint64_t start = 0;
  };

  explicit NaiveReader(const std::string& bytes);

  uint64_t result() const { return result_; }
  const std::vector<Entry>& entries() const { return entries_; }
  const Numbers& container() const { return container_; }
  const Numbers& bigTable() const { return bigTable_; }
  const Numbers& smallTable() const { return smallTable_; }
  // What reading `length` bytes from a position on gives.
  std::string read(const Entry& entry, uint64_t position, uint64_t length) const;

 private:
  uint64_t number(uint64_t offset, uint64_t width) const;
  bool readHeader() const;
  // What the file gives of a big block, at most `length` bytes; false for one after its end.
  bool bigBlock(uint64_t block, uint64_t length, std::string& bytes) const;
  std::string smallBlock(uint64_t block) const;
  // All bytes of a list of blocks, zeros where the file gives nothing.
  std::string whole(const Numbers& blocks) const;
  Numbers tableBlocks() const;
  static Numbers chain(const Numbers& table, uint64_t start);

  const std::string& file_;
  uint64_t result_ = 2;
  uint64_t bigSize_ = 0;
  uint64_t smallSize_ = 0;
  Numbers bigTable_;
  Numbers smallTable_ = Numbers(128, 0xFFFFFFFF);
  std::vector<Entry> entries_;
  Numbers container_;
};

}  // namespace tarn::test

#endif
