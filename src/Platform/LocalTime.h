// LocalTime.h - a moment as the local time of the machine.
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

}  // namespace tarn::platform

#endif  // TARN_PLATFORM_LOCALTIME_H
