// LocalTime.h - a moment as the local time of the machine, and back.
//
// Callable from any thread: no shared state of the runtime is used. Nothing throws.
#ifndef TARN_PLATFORM_LOCALTIME_H
#define TARN_PLATFORM_LOCALTIME_H

#include <cstdint>
#include <ctime>

namespace tarn::platform {

// Breaks seconds since 1970 (UTC, negative before) down into local time, by the time zone that the
// runtime knows. False, with `fields` undefined, for a moment whose year does not fit the record.
// Where the runtime itself knows the years from 1970 to 3000 only, its zone's rules hold for all
// others too.
bool BreakDownLocalTime(int64_t secondsSince1970, std::tm& fields) noexcept;

// The runtime's mktime: seconds since 1970 of fields in local time, which may be out of range and
// are normalized. Negative for a moment before 1970 and for one that the runtime refuses: on
// Windows those after the year 3000. Where the zone decides about summer time (`tm_isdst` < 0), the
// runtimes differ about hours that a change skips or repeats (docs/architecture.md, "Platforms").
int64_t SecondsFromLocalTime(std::tm& fields) noexcept;

}  // namespace tarn::platform

#endif  // TARN_PLATFORM_LOCALTIME_H
