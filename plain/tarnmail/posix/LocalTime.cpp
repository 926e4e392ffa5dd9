#include "LocalTime.h"

namespace tarn::host {

bool BreakDownLocalTime(int64_t secondsSince1970, std::tm& fields) {
  const std::time_t seconds = secondsSince1970;
  return localtime_r(&seconds, &fields) != nullptr;
}

}  // namespace tarn::host
