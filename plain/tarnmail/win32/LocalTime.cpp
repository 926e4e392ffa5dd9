#include "LocalTime.h"

#include <limits>

namespace tarn::host {
namespace {

// The calendar repeats after 400 years, to the day of the week.
constexpr int64_t kPeriodYears = 400;
constexpr int64_t kPeriodSeconds = 146097 * int64_t{86400};
// The runtime takes moments from 1970 to 3000.
constexpr int64_t kFirst = 86400;
constexpr int64_t kEnd = kFirst + 2 * kPeriodSeconds;
// Far beyond what `tm_year` holds, and far from what wraps.
constexpr int64_t kMost = int64_t{1} << 56;

}  // namespace

bool BreakDownLocalTime(int64_t secondsSince1970, std::tm& fields) {
  if (secondsSince1970 > kMost || secondsSince1970 < -kMost) return false;
  int64_t periods = 0;
  if (secondsSince1970 < kFirst) {
    periods = (secondsSince1970 - kFirst + 1) / kPeriodSeconds - 1;
  } else if (secondsSince1970 >= kEnd) {
    periods = (secondsSince1970 - kFirst) / kPeriodSeconds;
  }
  const __time64_t seconds = secondsSince1970 - periods * kPeriodSeconds;
  if (_localtime64_s(&fields, &seconds) != 0) return false;
  const int64_t year = fields.tm_year + periods * kPeriodYears;
  if (year > std::numeric_limits<int>::max() || year < std::numeric_limits<int>::min()) {
    return false;
  }
  fields.tm_year = static_cast<int>(year);
  return true;
}

}  // namespace tarn::host
