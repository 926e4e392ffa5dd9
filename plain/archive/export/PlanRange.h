// PlanRange.h - entries of a source's plan that follow each other, told so that they are found
// again without reading what is before them: where their items are, and what their names depend on.
#ifndef TARN_ARCHIVE_PLANRANGE_H
#define TARN_ARCHIVE_PLANRANGE_H

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "archive/common/ItemFilter.h"
#include "archive/export/NumberSpans.h"
#include "archive/export/SourcePlan.h"
#include "archive/model/ItemReader.h"

namespace tarn::archive {

// Items of one folder that the reader gives one after the other.
struct PlanRun {
  std::shared_ptr<const std::vector<std::string>> folder;  // never null
  std::string folderPath;                                  // as in PlanEntry
  ReadingPlace place;                                      // of the first
  uint64_t rows = 0;                                       // also those that the filter leaves out
};

// What cannot be read, as the whole plan has it.
struct PlanGap {
  uint64_t entry = 0;  // its number in the range
  PlanEntry trouble;
};

struct PlanRange {
  uint64_t entries = 0;
  std::vector<PlanRun> runs;
  NumberSpans shared;  // entries whose names get their ids
  std::vector<PlanGap> gaps;
};

// Makes a range of entries that are added in the order of their plan.
class RangeBuilder {
 public:
  // Whether the entry can be found again: an item without a place cannot.
  static bool takes(const PlanEntry& entry) {
    return entry.kind != PlanKind::Item || entry.place.has_value();
  }
  void add(PlanEntry entry);
  PlanRange take();

 private:
  PlanRange range_;
  uint64_t run_ = 0;       // that the last of the runs is of
  uint64_t firstRow_ = 0;  // its first
};

std::string Packed(const PlanRange& range);
PlanRange UnpackedRange(std::string_view bytes);

// Writes the plan of a range: the same entries as in that of the whole source. Gives what is wrong
// with the source where it has other items than the range, or cannot be read there. A trouble says
// that the plan cannot be written.
Outcome<std::optional<Trouble>> WriteRangePlan(ItemReader& reader, ItemFilter& filter,
                                               const PlanRange& range,
                                               const std::filesystem::path& path,
                                               const std::function<void()>& beat);

}  // namespace tarn::archive

#endif
