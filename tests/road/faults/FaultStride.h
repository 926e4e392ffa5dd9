// FaultStride.h - which calls of a sweep fail.
//
// The environment variable TARN_FAULT_STRIDE tells how far they are apart: 1 makes every call fail,
// and 7, which it is where the variable is not set, every seventh. A sweep does not begin with its
// first call then, but with one that the row and the group choose, so that all of the first seven
// come up in the table. What can only be said of all failures is asserted with a stride of 1.
#ifndef TARN_TESTS_ROAD_FAULTS_FAULTSTRIDE_H
#define TARN_TESTS_ROAD_FAULTS_FAULTSTRIDE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "support/Environment.h"

namespace tarn::test {

inline constexpr uint64_t kUsualStride = 7;

// 0 when the variable says nothing that is a stride.
inline uint64_t FaultStride() {
  const std::string text = GetVariable("TARN_FAULT_STRIDE").value_or(std::to_string(kUsualStride));
  return text.size() == 1 && text[0] >= '1' && text[0] <= '7' ? static_cast<uint64_t>(text[0] - '0')
                                                              : 0;
}

// The first call that fails, for a row and a group by their places in the table.
inline uint64_t FirstFault(size_t row, size_t group, uint64_t stride) {
  return 1 + (row + group) % stride;
}

}  // namespace tarn::test

#endif
