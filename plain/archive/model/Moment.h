// Moment.h - a point in time as mails tell it.
#ifndef TARN_ARCHIVE_MOMENT_H
#define TARN_ARCHIVE_MOMENT_H

#include <cstdint>
#include <optional>
#include <string>

namespace tarn::archive {

inline constexpr int64_t kSecondsOfDay = 24 * 60 * 60;

struct Moment {
  int64_t seconds = 0;                   // since 1970-01-01T00:00:00Z; fractions are dropped
  std::optional<int32_t> offsetMinutes;  // the sender's own, east of Greenwich, where it is known

  friend bool operator==(const Moment&, const Moment&) = default;
};

// In UTC. Years have four digits: what is beyond them is cut to the first or last moment that has
// them.
struct CalendarTime {
  int year = 1970;
  unsigned month = 1;
  unsigned day = 1;
  unsigned hour = 0;
  unsigned minute = 0;
  unsigned second = 0;
  unsigned weekday = 4;  // 0 is Sunday
};
CalendarTime CalendarTimeOf(int64_t seconds);

// From 100 nanoseconds since 1601 (MS-DTYP 2.3.3), none for 0 and for times before 1601 or after
// the year 9999.
std::optional<Moment> MomentOfFileTime(uint64_t fileTime);

// "2024-05-01T10:34:56Z", whatever the offset. Years have four digits; what is beyond them is cut
// to the first or last moment that has them.
std::string Iso8601(const Moment& moment);

// "2024-05-01T12:34:56+02:00", by the sender's offset; as Iso8601 where none is known.
std::string Iso8601WithOffset(const Moment& moment);

// "2024-05-01 12:34", by the sender's offset, else in UTC.
std::string ShortDate(const Moment& moment);

}  // namespace tarn::archive

#endif
