// CompoundImage.h - the bytes of a written compound file, with the writer's record of what is
// where, so that a test can look at any field or damage it. Offsets count from the file's start.
#ifndef TARN_TESTS_SUPPORT_COMPOUND_COMPOUNDIMAGE_H
#define TARN_TESTS_SUPPORT_COMPOUND_COMPOUNDIMAGE_H

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tarn::test {

// A directory record (MS-CFB 2.6), and its fields as offsets in it.
inline constexpr size_t kRecordBytes = 128;
enum CompoundRecordField : size_t {
  RecordName = 0,
  RecordNameSize = 64,  // 2 bytes
  RecordType = 66,      // 1 byte: 0 unused, 1 storage, 2 stream, 5 root
  RecordColour = 67,    // 1 byte: 0 red, 1 black
  RecordLeft = 68,
  RecordRight = 72,
  RecordChild = 76,
  RecordClassId = 80,
  RecordStart = 116,
  RecordSize = 120
};

struct CompoundImage {
  std::string bytes;
  size_t blockSize = 512;
  size_t smallBlockSize = 64;

  // Numbers of the blocks that hold each structure, in order.
  std::vector<uint32_t> tableBlocks;  // FAT
  std::vector<uint32_t> metaBlocks;   // DIFAT
  std::vector<uint32_t> smallTableBlocks;
  std::vector<uint32_t> directoryBlocks;
  std::vector<uint32_t> containerBlocks;

  // The directory entry and the first block of each path: "a/b"; "" is the root.
  std::map<std::string, uint32_t, std::less<>> entries;

  // Where a block begins.
  size_t block(uint32_t number) const { return (size_t{number} + 1) * blockSize; }
  // Where the FAT's entry of a block is, and the mini FAT's of a small block; beyond the table
  // std::out_of_range, as below.
  size_t tableEntry(uint32_t block) const;
  size_t smallTableEntry(uint32_t smallBlock) const;
  // Where the directory record of an entry, or of a path, begins.
  size_t record(uint32_t entry) const;
  size_t record(std::string_view path) const;
  // Where a small block begins.
  size_t smallBlock(uint32_t number) const;

  // Numbers, little-endian.
  uint64_t get(size_t offset, size_t width = 4) const;
  void put(size_t offset, uint64_t value, size_t width = 4);
};

}  // namespace tarn::test

#endif
