// SweptStatuses.h - what the sweeps of some rows end in, all of it: a status that is missing tells
// that a road is no longer taken, or that its failure is now hidden.
#ifndef TARN_TESTS_ROAD_FAULTS_SWEPTSTATUSES_H
#define TARN_TESTS_ROAD_FAULTS_SWEPTSTATUSES_H

#include <cstdint>
#include <map>
#include <span>
#include <string_view>
#include <vector>

#include "faults/FaultInputs.h"

namespace tarn::test {

// How often the runs of a group ended in each status.
using StatusCounts = std::map<int32_t, uint64_t>;

struct SweptStatuses {
  std::string_view row;
  int32_t group;
  std::vector<int32_t> statuses;  // of all runs with one failing call, and of the one without
  uint64_t leastThrown = 0;       // so many of them at least end in an exception
};

std::span<const SweptStatuses> AllSweptStatuses();

// What failing calls of a group can end in, on any row of the format.
bool IsDocumented(FaultFormat format, int32_t group, int32_t status);

}  // namespace tarn::test

#endif
