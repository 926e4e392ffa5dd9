// CalendarZone.h - the time zone of an appointment, as items keep it
// (MS-OXOCAL 2.2.1.39, 2.2.1.41).
#ifndef TARN_ARCHIVE_CALENDARZONE_H
#define TARN_ARCHIVE_CALENDARZONE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarn::archive {

// When clocks change in a year: on a day of the week, of which the nth in the month, 5 being the
// last.
struct ClockChange {
  unsigned month = 0;  // 0: never
  unsigned weekday = 0;
  unsigned nth = 0;
  int32_t minute = 0;  // of the day, by the clock as it was before
};

struct CalendarZone {
  std::string name;
  int32_t standardOffset = 0;  // minutes east of Greenwich
  int32_t daylightOffset = 0;
  ClockChange toStandard;
  ClockChange toDaylight;

  bool changes() const { return toStandard.month != 0 && toDaylight.month != 0; }

  // Seconds since 1970 by local time, of such in UTC, and the other way. Of the hour that comes
  // twice the first is meant.
  int64_t localOf(int64_t utc) const;
  int64_t utcOf(int64_t local) const;
};

// The day of a change in a year, as seconds since 1970 by local time.
int64_t TimeOfChange(const ClockChange& change, int year);

// PidLidTimeZoneStruct with the name from PidLidTimeZoneDescription.
std::optional<CalendarZone> ReadZoneStruct(std::string_view bytes, std::string_view name);

// PidLidAppointmentTimeZoneDefinition...: the rule that is in use, else the last.
std::optional<CalendarZone> ReadZoneDefinition(std::string_view bytes);

}  // namespace tarn::archive

#endif
