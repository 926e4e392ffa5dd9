#include "archive/export/PlanAttempts.h"

namespace tarn::archive {

bool PlanAttempts::died(std::optional<uint64_t> entries, const std::string& how) {
  constexpr int kMostAttempts = 20;
  constexpr int kMostOfSums = 3;
  ++attempts_;
  if (!entries) return attempts_ < kMostOfSums;
  const bool isAgain = last_ == entries;
  last_ = entries;
  if (isCut_ && isAgain) return false;
  if (!isAgain && attempts_ < kMostAttempts) return true;
  if (attempts_ < kMostAttempts && limits_.passedOver.emplace(*entries, how).second) {
    // The entry may be the death of the reader itself, which comes next then.
    return true;
  }
  limits_.entries = *entries;
  limits_.reasonAfter = "what comes after cannot be read: " + how;
  isCut_ = true;
  return attempts_ < 2 * kMostAttempts;
}

}  // namespace tarn::archive
