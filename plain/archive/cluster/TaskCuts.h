// TaskCuts.h - the entries of all inputs shared out among tasks of about the same cost.
#ifndef TARN_ARCHIVE_TASKCUTS_H
#define TARN_ARCHIVE_TASKCUTS_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <vector>

#include "archive/cluster/PlanFile.h"
#include "archive/export/SourcePlan.h"

namespace tarn::archive {

// What an input costs.
struct InputCost {
  size_t input = 0;
  PlanPlace plan;  // its entries; nowhere where it cannot be cut
  uint64_t bytes = 0;
  uint64_t messages = 0;
  uint64_t cost = 0;
  bool canBeCut = false;  // each entry can be found again
};

struct CutLimits {
  uint64_t targetCost = 0;
  uint64_t maxTasks = 1;
  uint64_t messageCost = 1;  // at least 1
};

uint64_t CostOf(const PlanEntry& entry, uint64_t messageCost);

// Reads the entries of a plan. Throws host::Failure where it cannot be read.
InputCost CostOfInput(size_t input, PlanPlace plan, uint64_t fileBytes, bool mayBeCut,
                      uint64_t messageCost);

// In falling order of cost. Large inputs are cut so that tasks are full; small ones come together,
// the largest first, where the least is. The same for the same entries.
std::vector<PlannedTask> CutTasks(const std::vector<InputCost>& inputs, const CutLimits& limits);

}  // namespace tarn::archive

#endif
