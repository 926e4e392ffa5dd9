// StatedPlaces.h - where the filter passes over a failure by design, so that a call succeeds with
// less or other content. docs/failures.md has the same list in words.
#ifndef TARN_TESTS_ROAD_FAULTS_STATEDPLACES_H
#define TARN_TESTS_ROAD_FAULTS_STATEDPLACES_H

#include <cstdint>
#include <span>

#include "faults/FaultInputs.h"
#include "faults/FaultOutcome.h"

namespace tarn::test {

struct StatedPlace {
  const char* name;
  // Whether the place lies on the road of this row, and can be met by faults of the group.
  bool (*concerns)(const FaultInput& input, int32_t group);
  // Whether an outcome with a fault is what the place makes of the one without.
  bool (*explains)(const FaultInput& input, const FaultOutcome& seen, const FaultOutcome& whole);
  // The row whose sweep must meet it: a place that nothing meets is none.
  const char* metBy;
};

std::span<const StatedPlace> StatedPlaces();

}  // namespace tarn::test

#endif
