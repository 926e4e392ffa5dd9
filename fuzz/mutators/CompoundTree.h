// CompoundTree.h - a compound file (MS-CFB) of unknown making as storages and streams, and where
// its structures lie.
//
// Nothing here is read by the filter's own code. Damage is passed over: what cannot be followed is
// missing. All work and memory are bounded by the size of the file.
#ifndef TARN_FUZZ_MUTATORS_COMPOUNDTREE_H
#define TARN_FUZZ_MUTATORS_COMPOUNDTREE_H

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "support/compound/CompoundBuilder.h"
#include "support/compound/CompoundImage.h"

namespace tarn::fuzz {

struct CompoundEntry {
  std::u16string name;  // 1 to 31 units
  bool isStream = false;
  std::string bytes;
  std::array<unsigned char, 16> classId = {};
  std::vector<CompoundEntry> children;
};

// Where tables, directory and container lie, without the names of entries. Nothing when the header
// does not hold.
std::optional<test::CompoundImage> MapCompoundFile(std::string_view file);

// The root. Of two entries with one name the later one is left out.
CompoundEntry ReadCompoundTree(const test::CompoundImage& image);
std::string WriteCompoundTree(const CompoundEntry& root, const test::CompoundOptions& options);

}  // namespace tarn::fuzz

#endif
