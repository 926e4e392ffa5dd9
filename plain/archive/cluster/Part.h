// Part.h - what a task leaves: a folder with the files that its workers wrote, the plans of its
// ranges, and what is to be known to put all into its place.
//
//   part.json   what it is, and the sum of what it holds
//   plans/N     the plan of its N-th range
//   entries/N   what became of each entry of that range, packed
//   work/...    the folders of the workers
#ifndef TARN_ARCHIVE_PART_H
#define TARN_ARCHIVE_PART_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/export/Sha256.h"
#include "archive/export/SourcePlan.h"
#include "archive/export/WorkQueue.h"

namespace tarn::archive {

inline constexpr const char* kPartsName = "parts";
inline constexpr const char* kPartFactsName = "part.json";

std::filesystem::path PartFolder(const std::filesystem::path& tree, uint64_t task);

struct PartFacts {
  std::string plan;  // its id
  uint64_t task = 0;
  std::string sha256;   // the same for the same items, whoever exported them and in how many pieces
  std::string attempt;  // which of several that did so
  uint64_t entries = 0;
  uint64_t exported = 0;
  uint64_t partial = 0;
  uint64_t failed = 0;
  uint64_t bytes = 0;  // of the files
  // For the log:
  std::string host;
  std::string begun;
  double seconds = 0;
};

std::string TextOfPart(const PartFacts& facts);
// Missing where there is no part, Damaged for what is none.
Outcome<PartFacts> PartIn(const std::filesystem::path& folder);

// The sum of a part, entry by entry.
class PartSum {
 public:
  // The plan of a range, which names the folders of its items; before its entries.
  std::optional<Trouble> addPlan(const std::filesystem::path& plan);
  // Reads what the worker wrote of the entry, and counts its items. Of a mail there is never more
  // than a piece in memory.
  std::optional<Trouble> add(const FinishedEntry& entry);
  // Tells it in the facts.
  void finish(PartFacts& facts) const;
  // The rows of the entry that was added last.
  const std::string& rows() const { return rows_; }

 private:
  std::optional<Trouble> addPart(const FinishedEntry& entry, WorkerPart part);
  Outcome<GrowingFile*> open(const std::filesystem::path& folder, WorkerPart part);
  void count(std::string_view rows);

  Sha256 sum_;
  PartFacts counts_;
  std::string rows_;
  std::filesystem::path openFolder_;
  std::array<std::unique_ptr<GrowingFile>, kWorkerParts> open_;
};

// So that its task is missing; what was there before under the other name goes. False where the
// system does not rename it.
bool SetPartAside(const std::filesystem::path& part);

std::filesystem::path PlanOfRange(const std::filesystem::path& folder, size_t range);
std::filesystem::path EntriesPath(const std::filesystem::path& folder, size_t range);

// Entries whose folders are those of workers, and are told as relative to the part's.
std::string Packed(const std::vector<FinishedEntry>& entries);
// Their folders are within that of the part. Damaged where the file is not whole.
Outcome<std::vector<FinishedEntry>> EntriesOfRange(const std::filesystem::path& folder,
                                                   size_t range);

}  // namespace tarn::archive

#endif
