#include "Platform/LocalTime.h"

#include <limits>

namespace tarn::platform {

bool BreakDownLocalTime(int64_t secondsSince1970, std::tm& fields) noexcept {
  if (secondsSince1970 < std::numeric_limits<std::time_t>::min() ||
      secondsSince1970 > std::numeric_limits<std::time_t>::max()) {
    return false;
  }
  const auto seconds = static_cast<std::time_t>(secondsSince1970);
  return localtime_r(&seconds, &fields) != nullptr;
}

int64_t SecondsFromLocalTime(std::tm& fields) noexcept { return std::mktime(&fields); }

}  // namespace tarn::platform
