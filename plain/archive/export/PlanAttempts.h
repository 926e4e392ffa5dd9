// PlanAttempts.h - how often a source is planned whose planner dies, and what is left out then.
#ifndef TARN_ARCHIVE_PLANATTEMPTS_H
#define TARN_ARCHIVE_PLANATTEMPTS_H

#include <cstdint>
#include <optional>
#include <string>

#include "archive/export/SourcePlan.h"

namespace tarn::archive {

// A death may be chance, as where the machine is out of memory for a moment: all is tried again as
// it was. One that comes again at the same entry is that entry's: it is passed over. Where even
// that does not help, the source ends before it.
class PlanAttempts {
 public:
  const PlanLimits& limits() const { return limits_; }

  // The planner died when it was done with so many entries, or while it added up the source where
  // `entries` is none. False where it is not to be tried again.
  bool died(std::optional<uint64_t> entries, const std::string& how);

 private:
  PlanLimits limits_;
  std::optional<uint64_t> last_;  // where it died before
  int attempts_ = 0;
  bool isCut_ = false;
};

}  // namespace tarn::archive

#endif
