// RecurrencePattern.h - how an appointment or a task recurs, as items keep it (MS-OXOCAL 2.2.1.44).
//
// AppointmentRecurrencePattern:
//   RecurrencePattern   when, which occurrences are gone, which are changed
//   4 bytes each        versions, start and end of an occurrence in minutes of its day
//   2                   how many exceptions, then each
//   ...                 the exceptions again, with texts in UTF-16
//
// Times are minutes since 1601, by the local time of the item's zone. Tasks have the first part.
#ifndef TARN_ARCHIVE_RECURRENCEPATTERN_H
#define TARN_ARCHIVE_RECURRENCEPATTERN_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarn::archive {

// An occurrence that is not as the pattern says.
struct RecurrenceException {
  int64_t start = 0;  // seconds since 1970, by local time, as all times here
  int64_t end = 0;
  int64_t original = 0;
  std::optional<std::string> subject;
  std::optional<std::string> location;
  std::optional<uint32_t> busyStatus;
  std::optional<bool> isAllDay;
};

struct RecurrencePattern {
  std::string rule;  // of RFC 5545 3.3.10, without its end
  std::optional<uint32_t> count;
  std::optional<int64_t> lastDay;     // that an occurrence may begin on
  std::vector<int64_t> deletedDays;   // midnights of occurrences that are gone or changed
  std::vector<int64_t> modifiedDays;  // midnights of the changed ones, as they are now
  int64_t firstDay = 0;
  int32_t startMinute = 0;  // of the day, where the pattern is an appointment's
  std::vector<RecurrenceException> exceptions;
  bool isWhole = true;  // whether the exceptions could be read
};

// None for bytes that are no pattern, and for calendars other than the Gregorian one.
std::optional<RecurrencePattern> ReadRecurrence(std::string_view bytes, bool isAppointment);

}  // namespace tarn::archive

#endif
