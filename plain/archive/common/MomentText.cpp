#include "archive/common/MomentText.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <ctime>

#include "Platform/LocalTime.h"

namespace tarn::archive {
namespace {

constexpr int kFirstYearOfFields = 1900;
constexpr int64_t kSecondsInAMinute = 60;

// The fields of a text from the year down, as far as they are there.
struct Fields {
  std::array<int, 6> value = {0, 1, 1, 0, 0, 0};
  size_t count = 0;
  std::optional<int64_t> offset;  // seconds east of Greenwich
};

bool TakeDigits(std::string_view& text, size_t count, int& value) {
  if (text.size() < count) return false;
  value = 0;
  for (size_t i = 0; i < count; ++i) {
    if (text[i] < '0' || text[i] > '9') return false;
    value = value * 10 + (text[i] - '0');
  }
  text.remove_prefix(count);
  return true;
}

bool TakeOne(std::string_view& text, std::string_view characters) {
  if (text.empty() || characters.find(text[0]) == std::string_view::npos) return false;
  text.remove_prefix(1);
  return true;
}

// "Z", "+02:00" or "+0200", and nothing after it.
std::optional<int64_t> ParseOffset(std::string_view text) {
  if (text == "Z" || text == "z") return 0;
  const bool isWest = text.starts_with('-');
  int hours = 0;
  int minutes = 0;
  if (!TakeOne(text, "+-") || !TakeDigits(text, 2, hours)) return std::nullopt;
  (void)TakeOne(text, ":");
  if (!TakeDigits(text, 2, minutes) || !text.empty() || hours > 23 || minutes > 59) {
    return std::nullopt;
  }
  const int64_t seconds = (hours * kSecondsInAMinute + minutes) * kSecondsInAMinute;
  return isWest ? -seconds : seconds;
}

bool IsInCalendar(const Fields& fields) {
  using namespace std::chrono;
  const auto [yearNumber, monthNumber, dayNumber, hour, minute, second] = fields.value;
  const year_month_day date(year{yearNumber}, month{static_cast<unsigned>(monthNumber)},
                            day{static_cast<unsigned>(dayNumber)});
  return date.ok() && hour < 24 && minute < 60 && second < 61;
}

std::optional<Fields> ParseFields(std::string_view text) {
  // Before each field but the first.
  constexpr std::array<std::string_view, 6> kSeparators = {"", "-", "-", "Tt ", ":", ":"};
  Fields fields;
  while (fields.count < fields.value.size()) {
    std::string_view rest = text;
    if (fields.count != 0 && !TakeOne(rest, kSeparators[fields.count])) break;
    if (!TakeDigits(rest, fields.count == 0 ? 4 : 2, fields.value[fields.count]))
      return std::nullopt;
    text = rest;
    ++fields.count;
  }
  constexpr size_t kWithHour = 4;
  if (fields.count == 0 || fields.count == kWithHour) return std::nullopt;
  if (!text.empty()) {
    if (fields.count < kWithHour) return std::nullopt;
    fields.offset = ParseOffset(text);
    if (!fields.offset) return std::nullopt;
  }
  return IsInCalendar(fields) ? std::optional(fields) : std::nullopt;
}

int64_t SecondsOf(std::array<int, 6> value, const std::optional<int64_t>& offset) {
  using namespace std::chrono;
  const year_month_day first(year{value[0]}, month{1}, day{1});
  if (!offset) {
    std::tm fields = {};
    fields.tm_year = value[0] - kFirstYearOfFields;
    fields.tm_mon = value[1] - 1;
    fields.tm_mday = value[2];
    fields.tm_hour = value[3];
    fields.tm_min = value[4];
    fields.tm_sec = value[5];
    fields.tm_isdst = -1;
    return platform::SecondsFromLocalTime(fields);
  }
  const year_month_day date(year{value[0]}, month{static_cast<unsigned>(value[1])},
                            day{static_cast<unsigned>(value[2])});
  const sys_seconds midnight = sys_days(date);
  return midnight.time_since_epoch().count() +
         (value[3] * kSecondsInAMinute + value[4]) * kSecondsInAMinute + value[5] - *offset;
}

// The first second after what the fields name: of the next year, month, day, minute or second.
int64_t EndOf(Fields fields) {
  constexpr size_t kDay = 3;
  if (fields.count > kDay) {
    const int64_t length = fields.count == 5 ? kSecondsInAMinute : 1;
    return SecondsOf(fields.value, fields.offset) + length;
  }
  std::array<int, 6>& value = fields.value;
  if (fields.count == kDay) {
    using namespace std::chrono;
    const year_month_day next(sys_days(year{value[0]} / value[1] / value[2]) + days{1});
    value[0] = static_cast<int>(next.year());
    value[1] = static_cast<int>(static_cast<unsigned>(next.month()));
    value[2] = static_cast<int>(static_cast<unsigned>(next.day()));
  } else if (fields.count == 2 && value[1] < 12) {
    ++value[1];
  } else {
    ++value[0];
    value[1] = 1;
  }
  return SecondsOf(value, fields.offset);
}

// As the calendar of Greenwich has it; `shift` seconds are added to the clock.
std::tm FieldsAt(int64_t seconds, int64_t shift) {
  using namespace std::chrono;
  const sys_seconds time{std::chrono::seconds{seconds + shift}};
  const sys_days midnight = floor<days>(time);
  const year_month_day date{midnight};
  const hh_mm_ss<std::chrono::seconds> clock(time - midnight);
  std::tm fields = {};
  fields.tm_year = static_cast<int>(date.year()) - kFirstYearOfFields;
  fields.tm_mon = static_cast<int>(static_cast<unsigned>(date.month())) - 1;
  fields.tm_mday = static_cast<int>(static_cast<unsigned>(date.day()));
  fields.tm_hour = static_cast<int>(clock.hours().count());
  fields.tm_min = static_cast<int>(clock.minutes().count());
  fields.tm_sec = static_cast<int>(clock.seconds().count());
  fields.tm_wday = static_cast<int>(weekday{midnight}.c_encoding());
  return fields;
}

// How far the machine's clock is ahead of Greenwich at that moment, in seconds.
int64_t LocalOffset(int64_t seconds) {
  std::tm fields = {};
  if (!platform::BreakDownLocalTime(seconds, fields)) return 0;
  using namespace std::chrono;
  const year_month_day date(year{fields.tm_year + kFirstYearOfFields},
                            month{static_cast<unsigned>(fields.tm_mon) + 1},
                            day{static_cast<unsigned>(fields.tm_mday)});
  const int64_t local = sys_seconds(sys_days(date)).time_since_epoch().count() +
                        (fields.tm_hour * kSecondsInAMinute + fields.tm_min) * kSecondsInAMinute +
                        fields.tm_sec;
  return local - seconds;
}

// Years that the calendar's type holds.
bool IsInRange(const Moment& moment) {
  constexpr int64_t kFirst = -62135596800;  // 0001-01-01
  constexpr int64_t kLast = 253402300799;   // 9999-12-31
  return moment.seconds >= kFirst + kSecondsOfDay && moment.seconds <= kLast - kSecondsOfDay;
}

}  // namespace

std::optional<Span> ParseSpan(std::string_view text) {
  const std::optional<Fields> fields = ParseFields(text);
  if (!fields || fields->value[0] == 0) return std::nullopt;
  return Span{SecondsOf(fields->value, fields->offset), EndOf(*fields) - 1};
}

std::string LocalMinute(const Moment& moment) {
  if (!IsInRange(moment)) return Iso8601(moment);
  const std::tm at = FieldsAt(moment.seconds, LocalOffset(moment.seconds));
  std::array<char, 64> text;
  std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d",
                at.tm_year + kFirstYearOfFields, at.tm_mon + 1, at.tm_mday, at.tm_hour, at.tm_min);
  return text.data();
}

std::string LongDate(const Moment& moment) {
  if (!IsInRange(moment)) return Iso8601(moment);
  constexpr std::array<const char*, 7> kDays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  constexpr std::array<const char*, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const int64_t offset = moment.offsetMinutes ? *moment.offsetMinutes * kSecondsInAMinute
                                              : LocalOffset(moment.seconds);
  const std::tm at = FieldsAt(moment.seconds, offset);
  const auto minutes = static_cast<int>((offset < 0 ? -offset : offset) / kSecondsInAMinute);
  std::array<char, 96> text;
  std::snprintf(text.data(), text.size(), "%s, %d %s %04d %02d:%02d:%02d %c%02d%02d",
                kDays[static_cast<size_t>(at.tm_wday)], at.tm_mday,
                kMonths[static_cast<size_t>(at.tm_mon)], at.tm_year + kFirstYearOfFields,
                at.tm_hour, at.tm_min, at.tm_sec, offset < 0 ? '-' : '+', minutes / 60,
                minutes % 60);
  return text.data();
}

}  // namespace tarn::archive
