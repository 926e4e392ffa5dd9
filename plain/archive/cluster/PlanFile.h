// PlanFile.h - the plan of an export by many machines: JSON Lines that one command writes and the
// others read.
//
// The first line has the id of the plan, which is the SHA-256 of all that comes after it, and the
// stamps of inputs: a copy with other times is the same input. The
// second one the options of the export; then come the inputs, and then the tasks.
#ifndef TARN_ARCHIVE_PLANFILE_H
#define TARN_ARCHIVE_PLANFILE_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "archive/export/Export.h"
#include "archive/export/HashedFile.h"
#include "archive/export/PlanRange.h"
#include "archive/export/Sources.h"

namespace tarn::archive {

struct PlannedInput {
  ExportSource source;  // its path is not set
  FileSum sum;          // its digits are empty where it cannot be read
  std::string print;    // of a large store (InputPrint.h)
  std::string stamp;    // of another large one (SourceSum.h)
  uint64_t entries = 0;
  std::string reason;  // of the source as a whole; empty: nothing is wrong with it
};

// All of an input, or a range of its entries.
struct PlannedRange {
  size_t input = 0;
  uint64_t first = 0;
  uint64_t entries = 0;
  std::optional<PlanRange> range;
};

struct PlannedTask {
  uint64_t cost = 0;
  uint64_t bytes = 0;
  uint64_t messages = 0;
  std::vector<PlannedRange> ranges;  // by input and place
};

// What the plan as a whole tells.
struct PlanFacts {
  ExportOptions options;  // that shape the result
  std::string directory;  // where relative names of inputs begin; empty where there are none
  uint64_t otherFiles = 0;
  uint64_t messageCost = 0;
  uint64_t targetCost = 0;
};

// The lines after the first, and that one.
std::string PlanText(const PlanFacts& facts, const std::vector<PlannedInput>& inputs,
                     const std::vector<PlannedTask>& tasks);

class PlanFile {
 public:
  // Reads all but the tasks. Throws host::Failure: Usage for one that is no plan of this version or
  // was changed, Temporary where the system does not give it.
  explicit PlanFile(const std::string& path);

  const std::string& id() const { return id_; }
  uint64_t tasks() const { return tasks_; }
  const PlanFacts& facts() const { return facts_; }
  const std::vector<PlannedInput>& inputs() const { return inputs_; }

  PlannedTask task(uint64_t number) const;
  void forEachTask(const std::function<void(uint64_t number, PlannedTask task)>& take) const;

 private:
  void takeLine(std::string_view line);
  void takeStamps(const std::vector<std::pair<size_t, std::string>>& stamps);
  void checkRange(const PlannedRange& range) const;
  [[noreturn]] void refuse(const std::string& why) const;

  std::string path_;
  std::filesystem::path file_;
  std::string id_;
  uint64_t tasks_ = 0;
  PlanFacts facts_;
  std::vector<PlannedInput> inputs_;
  std::set<std::string> trees_;   // of them
  std::vector<uint64_t> places_;  // of the lines of the tasks, and the end
};

}  // namespace tarn::archive

#endif
