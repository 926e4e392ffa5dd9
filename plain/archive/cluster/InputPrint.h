// InputPrint.h - whether an input is the one that was planned, without reading all of a large one.
#ifndef TARN_ARCHIVE_INPUTPRINT_H
#define TARN_ARCHIVE_INPUTPRINT_H

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include "archive/cluster/PlanFile.h"
#include "archive/export/HashedFile.h"

namespace tarn::archive {

// Larger inputs have a print or a stamp.
inline constexpr uint64_t kLargestSummed = uint64_t{16} << 20;

// "samples-1:" and the SHA-256 of the file's size (8 bytes, the lowest first), its first and last
// 64 KiB and 62 pieces of 16 KiB at the same distances between: where it was changed at another
// place and kept its size, it has the same print. A trouble says that the system does not tell.
Outcome<std::string> PrintOfStore(const std::filesystem::path& path);

// Whether the file is the planned one: by its print; where it has none, by its stamp, or by its sum
// where it has no stamp or another one. A trouble says that the system does not tell.
Outcome<bool> IsSameInput(const std::filesystem::path& path, const PlannedInput& input,
                          const std::function<void()>& beat);

}  // namespace tarn::archive

#endif
