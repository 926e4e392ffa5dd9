#include "archive/writers/RecurrencePattern.h"

#include <array>

#include "archive/mapi/PropertyValues.h"
#include "archive/writers/ItemText.h"
#include "archive/writers/LittleBytes.h"

namespace tarn::archive {
namespace {

enum Frequency : uint16_t {
  kDaily = 0x200A,
  kWeekly = 0x200B,
  kMonthly = 0x200C,
  kYearly = 0x200D
};
enum PatternType : uint16_t {
  kEachDay = 0,
  kEachWeek = 1,
  kEachMonth = 2,
  kEachMonthNth = 3,
  kEachMonthEnd = 4
};
enum EndType : uint32_t { kEndsAtDate = 0x2021, kEndsAfterCount = 0x2022 };
enum Override : uint16_t {
  kHasSubject = 0x0001,
  kHasMeetingType = 0x0002,
  kHasReminderDelta = 0x0004,
  kHasReminder = 0x0008,
  kHasLocation = 0x0010,
  kHasBusyStatus = 0x0020,
  kHasAttachment = 0x0040,
  kHasSubType = 0x0080,
  kHasColor = 0x0100
};

constexpr uint16_t kGregorianCalendars[] = {0, 1};
constexpr uint32_t kMinutesOfDay = 24 * 60;
constexpr int64_t kSecondsTo1970 = 11644473600;
constexpr std::array<const char*, 7> kDays = {"SU", "MO", "TU", "WE", "TH", "FR", "SA"};

int64_t SecondsOf(uint32_t minutes) { return int64_t{minutes} * 60 - kSecondsTo1970; }

std::string DaysText(uint32_t mask, const std::string& before = {}) {
  std::string text;
  for (size_t day = 0; day < kDays.size(); ++day) {
    if ((mask & (1u << day)) == 0) continue;
    if (!text.empty()) text += ',';
    text += before + kDays[day];
  }
  return text;
}

std::string IntervalText(uint32_t interval) {
  return interval > 1 ? ";INTERVAL=" + std::to_string(interval) : std::string();
}

bool IsOneDay(uint32_t mask) { return (mask & (mask - 1)) == 0; }

// What says which days, of the type's own numbers.
struct TypeNumbers {
  uint32_t days = 0;  // a mask of the days of the week
  uint32_t number = 0;
};

std::string MonthDayText(const TypeNumbers& numbers, bool isNth) {
  if (isNth) {
    // Up to the fourth; more is the last.
    const std::string nth = numbers.number > 4 ? "-1" : std::to_string(numbers.number);
    if (IsOneDay(numbers.days)) return ";BYDAY=" + DaysText(numbers.days, nth);
    return ";BYDAY=" + DaysText(numbers.days) + ";BYSETPOS=" + nth;
  }
  if (numbers.number >= 31) return ";BYMONTHDAY=-1";
  if (numbers.number <= 28) return ";BYMONTHDAY=" + std::to_string(numbers.number);
  // A month that is shorter has the last of its days.
  std::string days = "28";
  for (uint32_t day = 29; day <= numbers.number; ++day) days += "," + std::to_string(day);
  return ";BYMONTHDAY=" + days + ";BYSETPOS=-1";
}

std::optional<std::string> RuleOf(uint16_t frequency, uint16_t type, uint32_t period,
                                  const TypeNumbers& numbers, unsigned month) {
  if (period == 0) return std::nullopt;
  if (type == kEachDay) {
    if (period % kMinutesOfDay != 0) return std::nullopt;
    return "FREQ=DAILY" + IntervalText(period / kMinutesOfDay);
  }
  if (type == kEachWeek) {
    if ((numbers.days & 0x7F) == 0) return std::nullopt;
    return "FREQ=WEEKLY" + IntervalText(period) + ";BYDAY=" + DaysText(numbers.days);
  }
  const bool isNth = type == kEachMonthNth;
  if (isNth && ((numbers.days & 0x7F) == 0 || numbers.number == 0)) return std::nullopt;
  if (!isNth && numbers.number == 0) return std::nullopt;
  const std::string days = MonthDayText(numbers, isNth);
  if (frequency == kYearly && period % 12 == 0) {
    return "FREQ=YEARLY" + IntervalText(period / 12) + ";BYMONTH=" + std::to_string(month) + days;
  }
  return "FREQ=MONTHLY" + IntervalText(period) + days;
}

// Dates: how many, then each.
std::vector<int64_t> ReadDays(LittleBytes& bytes) {
  const uint32_t count = bytes.u32();
  std::vector<int64_t> days;
  if (count > bytes.left() / 4) {
    bytes.take(bytes.left() + 1);
    return days;
  }
  days.reserve(count);
  for (uint32_t at = 0; at < count; ++at) days.push_back(SecondsOf(bytes.u32()));
  return days;
}

std::string ReadText8(LittleBytes& bytes) {
  bytes.u16();  // with the byte after the text
  return mapi::Utf8OfText8(bytes.take(bytes.u16()), std::nullopt);
}

std::string ReadText16(LittleBytes& bytes) {
  return mapi::Utf8OfText16(bytes.take(size_t{2} * bytes.u16()));
}

RecurrenceException ReadException(LittleBytes& bytes, uint16_t& overrides) {
  RecurrenceException exception;
  exception.start = SecondsOf(bytes.u32());
  exception.end = SecondsOf(bytes.u32());
  exception.original = SecondsOf(bytes.u32());
  overrides = bytes.u16();
  const auto has = [&](Override flag) { return (overrides & flag) != 0; };
  if (has(kHasSubject)) exception.subject = ReadText8(bytes);
  for (const Override flag : {kHasMeetingType, kHasReminderDelta, kHasReminder}) {
    if (has(flag)) bytes.u32();
  }
  if (has(kHasLocation)) exception.location = ReadText8(bytes);
  if (has(kHasBusyStatus)) exception.busyStatus = bytes.u32();
  if (has(kHasAttachment)) bytes.u32();
  if (has(kHasSubType)) exception.isAllDay = bytes.u32() != 0;
  if (has(kHasColor)) bytes.u32();
  return exception;
}

// The second telling has the texts in UTF-16.
void ReadWideTexts(LittleBytes& bytes, uint16_t overrides, bool hasHighlight,
                   RecurrenceException& exception) {
  if (hasHighlight) bytes.take(bytes.u32());
  bytes.take(bytes.u32());
  if ((overrides & (kHasSubject | kHasLocation)) == 0) return;
  for (int time = 0; time < 3; ++time) bytes.u32();
  if ((overrides & kHasSubject) != 0) {
    std::string text = ReadText16(bytes);
    if (!bytes.isShort()) exception.subject = std::move(text);
  }
  if ((overrides & kHasLocation) != 0) {
    std::string text = ReadText16(bytes);
    if (!bytes.isShort()) exception.location = std::move(text);
  }
  bytes.take(bytes.u32());
}

void ReadAppointment(LittleBytes& bytes, RecurrencePattern& pattern) {
  constexpr uint32_t kHighlightVersion = 0x3009;
  bytes.u32();
  const uint32_t version = bytes.u32();
  pattern.startMinute = bytes.i32();
  bytes.u32();
  const uint16_t count = bytes.u16();
  std::vector<uint16_t> overrides;
  for (uint16_t at = 0; at < count && !bytes.isShort(); ++at) {
    uint16_t flags = 0;
    RecurrenceException exception = ReadException(bytes, flags);
    if (bytes.isShort()) break;
    pattern.exceptions.push_back(std::move(exception));
    overrides.push_back(flags);
  }
  pattern.isWhole = !bytes.isShort();
  bytes.take(bytes.u32());
  for (size_t at = 0; at < overrides.size() && !bytes.isShort(); ++at) {
    ReadWideTexts(bytes, overrides[at], version >= kHighlightVersion, pattern.exceptions[at]);
  }
}

}  // namespace

std::optional<RecurrencePattern> ReadRecurrence(std::string_view blob, bool isAppointment) {
  LittleBytes bytes(blob);
  constexpr uint16_t kVersion = 0x3004;
  if (bytes.u16() != kVersion || bytes.u16() != kVersion) return std::nullopt;
  const uint16_t frequency = bytes.u16();
  const uint16_t type = bytes.u16();
  const uint16_t calendar = bytes.u16();
  if (frequency < kDaily || frequency > kYearly || type > kEachMonthEnd) return std::nullopt;
  if (calendar != kGregorianCalendars[0] && calendar != kGregorianCalendars[1]) return std::nullopt;
  bytes.u32();
  const uint32_t period = bytes.u32();
  bytes.u32();
  TypeNumbers numbers;
  if (type == kEachWeek || type == kEachMonthNth) numbers.days = bytes.u32();
  if (type >= kEachMonth) numbers.number = bytes.u32();
  const uint32_t end = bytes.u32();
  RecurrencePattern pattern;
  const uint32_t count = bytes.u32();
  const uint32_t firstDayOfWeek = bytes.u32();
  pattern.deletedDays = ReadDays(bytes);
  pattern.modifiedDays = ReadDays(bytes);
  pattern.firstDay = SecondsOf(bytes.u32());
  const int64_t lastDay = SecondsOf(bytes.u32());
  if (bytes.isShort()) return std::nullopt;
  const std::optional<std::string> rule =
      RuleOf(frequency, type, period, numbers, CalendarTimeOf(pattern.firstDay).month);
  if (!rule) return std::nullopt;
  pattern.rule = *rule;
  if (type == kEachWeek && period > 1 && firstDayOfWeek < kDays.size()) {
    pattern.rule += std::string(";WKST=") + kDays[firstDayOfWeek];
  }
  if (end == kEndsAtDate) pattern.lastDay = lastDay;
  if (end == kEndsAfterCount && count != 0) pattern.count = count;
  if (isAppointment) ReadAppointment(bytes, pattern);
  return pattern;
}

}  // namespace tarn::archive
