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

}  // namespace

CalendarTime CalendarTimeOf(int64_t seconds) {
  seconds = std::clamp(seconds, kFirstSecond, kLastSecond);
  const std::chrono::sys_seconds time{std::chrono::seconds(seconds)};
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const auto ofDay = static_cast<unsigned>((time - day).count());
  return {static_cast<int>(date.year()),
          static_cast<unsigned>(date.month()),
          static_cast<unsigned>(date.day()),
          ofDay / 3600,
          ofDay / 60 % 60,
          ofDay % 60,
          std::chrono::weekday(day).c_encoding()};
}

std::optional<Moment> MomentOfFileTime(uint64_t fileTime) {
  if (fileTime == 0) return std::nullopt;
  const int64_t seconds = static_cast<int64_t>(fileTime / kTicksInASecond) - kSecondsFrom1601To1970;
  if (seconds > kLastSecond) return std::nullopt;
  return Moment{seconds, std::nullopt};
}

std::string Iso8601(const Moment& moment) {
  const CalendarTime at = CalendarTimeOf(moment.seconds);
  std::array<char, 64> text;
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02u:%02u:%02uZ", at.year, at.month,
                at.day, at.hour, at.minute, at.second);
  return text.data();
}

std::string Iso8601WithOffset(const Moment& moment) {
  if (!moment.offsetMinutes) return Iso8601(moment);
  const int64_t offset = *moment.offsetMinutes;
  std::string text = Iso8601({moment.seconds + 60 * offset, std::nullopt});
  text.pop_back();
  const auto size = static_cast<unsigned>(offset < 0 ? -offset : offset);
  std::array<char, 64> zone;
  std::snprintf(zone.data(), zone.size(), "%c%02u:%02u", offset < 0 ? '-' : '+', size / 60,
                size % 60);
  return text + zone.data();
}

std::string ShortDate(const Moment& moment) {
  const CalendarTime at =
      CalendarTimeOf(moment.seconds + int64_t{60} * moment.offsetMinutes.value_or(0));
  std::array<char, 64> text;
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02u:%02u", at.year, at.month, at.day,
                at.hour, at.minute);
  return text.data();
}

}  // namespace tarn::archive
