// LocalTime.cpp - the runtime's local time, also for moments that it refuses.
//
// The runtime knows the years 1970 to 3000. The calendar repeats every 400 years, weekdays
// included, and the zone's rules hold for all years alike; so another moment is that many times 400
// years away from one that the runtime knows.
#include "Platform/LocalTime.h"

#include <limits>

namespace tarn::platform {
namespace {

constexpr int64_t kYears = 400;
constexpr int64_t kSeconds = 146097 * int64_t{86400};  // of these years
constexpr int64_t kAfterTheLast = 32503680000;         // 3000-01-01, a year before the runtime ends

constexpr int64_t FloorDiv(int64_t value, int64_t divisor) {
  return value / divisor - (value % divisor < 0 ? 1 : 0);
}

}  // namespace

bool BreakDownLocalTime(int64_t secondsSince1970, std::tm& fields) noexcept {
  const bool isKnown = secondsSince1970 >= 0 && secondsSince1970 < kAfterTheLast;
  const int64_t periods = isKnown ? 0 : FloorDiv(secondsSince1970, kSeconds);
  const __time64_t known = secondsSince1970 - periods * kSeconds;
  if (_localtime64_s(&fields, &known) != 0) return false;
  const int64_t year = fields.tm_year + periods * kYears;
  if (year < std::numeric_limits<int>::min() || year > std::numeric_limits<int>::max()) {
    return false;
  }
  fields.tm_year = static_cast<int>(year);
  return true;
}

int64_t SecondsFromLocalTime(std::tm& fields) noexcept { return _mktime64(&fields); }

}  // namespace tarn::platform
