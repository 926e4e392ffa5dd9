#include "archive/model/Moment.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>

namespace tarn::archive {
namespace {

constexpr int64_t kSecondsFrom1601To1970 = 11644473600;
constexpr uint64_t kTicksInASecond = 10000000;
constexpr int64_t kFirstSecond = -62167219200;  // 0000-01-01T00:00:00Z
constexpr int64_t kLastSecond = 253402300799;   // 9999-12-31T23:59:59Z

struct Calendar {
  int year = 0;
  unsigned month = 0;
  unsigned day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
};

Calendar CalendarOf(int64_t seconds) {
  const std::chrono::sys_seconds time{
      std::chrono::seconds(std::clamp(seconds, kFirstSecond, kLastSecond))};
  const auto midnight = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(midnight);
  const std::chrono::hh_mm_ss<std::chrono::seconds> clock(time - midnight);
  return {static_cast<int>(date.year()),
          static_cast<unsigned>(date.month()),
          static_cast<unsigned>(date.day()),
          static_cast<int>(clock.hours().count()),
          static_cast<int>(clock.minutes().count()),
          static_cast<int>(clock.seconds().count())};
}

}  // namespace

std::optional<Moment> MomentOfFileTime(uint64_t fileTime) {
  if (fileTime == 0) return std::nullopt;
  const int64_t seconds = static_cast<int64_t>(fileTime / kTicksInASecond) - kSecondsFrom1601To1970;
  if (seconds > kLastSecond) return std::nullopt;
  return Moment{seconds, std::nullopt};
}

std::string Iso8601(const Moment& moment) {
  const Calendar at = CalendarOf(moment.seconds);
  std::array<char, 64> text;
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", at.year, at.month,
                at.day, at.hour, at.minute, at.second);
  return text.data();
}

std::string ShortDate(const Moment& moment) {
  const Calendar at = CalendarOf(moment.seconds + int64_t{60} * moment.offsetMinutes.value_or(0));
  std::array<char, 64> text;
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02d:%02d", at.year, at.month, at.day,
                at.hour, at.minute);
  return text.data();
}

}  // namespace tarn::archive
