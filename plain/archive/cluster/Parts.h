// Parts.h - the parts of an export that are there, and whether they are what they were.
#ifndef TARN_ARCHIVE_PARTS_H
#define TARN_ARCHIVE_PARTS_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include "archive/cluster/Part.h"
#include "archive/cluster/PlanFile.h"

namespace tarn::archive {

// Numbers of tasks without a part. Throws host::Failure (Usage) for parts of another plan, and
// (Temporary) where the system does not tell.
std::vector<uint64_t> MissingParts(const PlanFile& plan, const std::filesystem::path& tree);

// A damaged part, with the reason.
struct DamagedPart {
  uint64_t task = 0;
  Trouble trouble;
};

// Reads every file of every part and compares its sum, where it is: in the part, or already in its
// place in the tree. So many threads at once. Throws host::Failure (Temporary) where the system
// does not give what is there.
std::vector<DamagedPart> DamagedParts(const PlanFile& plan, const std::filesystem::path& tree,
                                      size_t threads);

}  // namespace tarn::archive

#endif
