// CompoundBuilder.h - writes ordinary compound files (MS-CFB) from a short description.
//
//   CompoundBuilder file;                                  // version 3, blocks of 512 bytes
//   file.stream("__substg1.0_0037001F", "H\0i\0");         // of the root
//   file.storage("__recip_version1.0_#00000000").stream("__properties_version1.0", bytes);
//   std::string mail = file.write();                       // the bytes
//   CompoundImage image = file.image();                    // the same, with the places of all
//   parts
//
// What is written is as published: streams below 4096 bytes in small blocks of 64 bytes, FAT and
// DIFAT blocks marked as such, the children of each storage in a red-black tree ordered by length
// and then by upper-cased text (of ASCII and Latin-1 letters; other units are as they are).
// Blocks are laid out as: big streams, container, mini FAT, directory, FAT, DIFAT. The options make
// files that are unusual but within the format, and, where said, beyond it.
#ifndef TARN_TESTS_SUPPORT_COMPOUND_COMPOUNDBUILDER_H
#define TARN_TESTS_SUPPORT_COMPOUND_COMPOUNDBUILDER_H

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "support/compound/CompoundImage.h"

namespace tarn::test {

enum class CompoundVersion { V3, V4 };  // blocks of 512 and of 4096 bytes

// How the children of a storage hang together.
enum class SiblingShape {
  Balanced,   // a red-black tree
  RightList,  // ascending, each one the right sibling of the one before; all black, unpublished
  LeftList    // descending along the left siblings; all black, unpublished
};

// Where the blocks of a stream lie.
enum class BlockOrder {
  Ascending,    // side by side
  Descending,   // each block before its predecessor
  Interleaved,  // every second block first, then the others
};

struct CompoundOptions {
  CompoundVersion version = CompoundVersion::V3;
  SiblingShape shape = SiblingShape::Balanced;
  BlockOrder order = BlockOrder::Ascending;  // of big streams, the container and the directory
  uint32_t bigShift = 0;  // of the block size; 0: the version's. Others than 9 and 12: unpublished
  uint32_t freeBlocks = 0;  // that many blocks that nothing uses, before all others
};

class CompoundFolder {
 public:
  // A stream of these bytes. One of that name is replaced. Gives the folder back. Names of more
  // than 31 units throw std::length_error. Each byte of a narrow name is one unit.
  CompoundFolder& stream(std::string_view name, std::string_view bytes);
  CompoundFolder& stream(std::u16string_view name, std::string_view bytes);
  // A storage below this one, made when there is none of that name. It lives as long as the
  // builder.
  CompoundFolder& storage(std::string_view name);
  CompoundFolder& storage(std::u16string_view name);
  // The class id that the storage's record carries; zeros unless set.
  CompoundFolder& classId(const std::array<unsigned char, 16>& id);

 private:
  friend class CompoundImageWriter;
  friend class CompoundBuilder;

  CompoundFolder& child(std::u16string_view name, bool isStream);

  std::u16string name_;
  bool isStream_ = false;
  std::string bytes_;
  std::array<unsigned char, 16> classId_ = {};
  std::vector<std::unique_ptr<CompoundFolder>> children_;  // in the order in which they were made
  std::map<std::u16string, CompoundFolder*, std::less<>> byName_;
};

class CompoundBuilder {
 public:
  CompoundBuilder() : CompoundBuilder(CompoundOptions()) {}
  explicit CompoundBuilder(CompoundVersion version);
  explicit CompoundBuilder(const CompoundOptions& options);

  CompoundFolder& root() { return root_; }
  // Of the root.
  CompoundBuilder& stream(std::string_view name, std::string_view bytes);
  CompoundFolder& storage(std::string_view name) { return root_.storage(name); }
  // The storage of a path, "a/b", with all that lead to it; "" is the root.
  CompoundFolder& at(std::string_view path);

  CompoundImage image() const;
  std::string write() const { return image().bytes; }

 private:
  CompoundOptions options_;
  CompoundFolder root_;
};

}  // namespace tarn::test

#endif
