// NaiveCompound.h - what a compound file that is made from nothing must look like, worked out the
// long way: every table is a plain list that is searched from its start, every entry is found by
// looking at all of them, and every structure is written out whole.
#ifndef TARN_TESTS_COMPOUND_NAIVECOMPOUND_H
#define TARN_TESTS_COMPOUND_NAIVECOMPOUND_H

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace tarn::test {

class NaiveCompound {
 public:
  NaiveCompound();

  // Appends to a stream of the root or, with one "/", of a storage of the root.
  void append(const std::string& path, const std::string& bytes);
  // Cuts or extends a stream.
  void resize(const std::string& path, uint32_t size);
  // The file's bytes when it is flushed now.
  std::string flush();
  // Lets the next flush write only what changes from now on.
  void clearMarks();

  uint32_t tableBlockCount() const { return static_cast<uint32_t>(tableBlocks_.size()); }
  uint32_t metaBlockCount() const { return static_cast<uint32_t>(metaBlocks_.size()); }

 private:
  using Numbers = std::vector<uint32_t>;
  struct Table {
    Numbers entries = Numbers(128, 0xFFFFFFFF);
    std::set<uint32_t> dirty;
    bool search = true;
  };
  struct Entry {
    std::string name;
    uint32_t parent;
    bool isDirectory;
    uint32_t size = 0;
    uint32_t start = 0xFFFFFFFE;
    uint32_t prev = 0xFFFFFFFF;
    uint32_t next = 0xFFFFFFFF;
    uint32_t child = 0xFFFFFFFF;
    Numbers chain = {};
  };

  static uint32_t firstFree(Table& table);
  static void set(Table& table, uint32_t index, uint32_t value);
  static bool less(const std::string& left, const std::string& right);

  uint32_t entry(uint32_t parent, const std::string& name, bool isDirectory);
  uint32_t pathEntry(const std::string& path);
  void hang(uint32_t index);
  void growDirectory(uint32_t index);
  void cover(uint32_t block);
  void addTableBlock();
  void extend(Numbers& chain);
  void extendSmall(Entry& stream);
  void setSize(uint32_t index, uint32_t size);
  void writeAt(uint32_t index, uint32_t position, const std::string& bytes);
  std::string contents(const Entry& stream, uint32_t length) const;
  size_t place(const Entry& stream, uint32_t position) const;
  void put(size_t at, const std::string& bytes);
  std::string record(uint32_t index) const;
  void putTable(Table& table, const Numbers& blocks);

  Table big_;
  Table small_;
  std::vector<Entry> entries_;
  std::set<uint32_t> dirtyDirectory_ = {0};
  Numbers tableBlocks_ = {0};
  Numbers directory_ = {1};
  Numbers smallTable_ = {2};
  Numbers container_ = {3};
  Numbers metaBlocks_;
  std::string bytes_;
};

}  // namespace tarn::test

#endif
