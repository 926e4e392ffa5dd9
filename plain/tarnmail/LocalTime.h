// LocalTime.h - a moment as the local time of the machine. One folder a system implements it.
#ifndef TARN_TARNMAIL_LOCALTIME_H
#define TARN_TARNMAIL_LOCALTIME_H

#include <cstdint>
#include <ctime>

namespace tarn::host {

// Seconds since 1970 (UTC, negative before) by the time zone that the runtime knows: what
// std::mktime makes seconds of. False, with `fields` undefined, for a moment whose year does not
// fit `fields`.
bool BreakDownLocalTime(int64_t secondsSince1970, std::tm& fields);

}  // namespace tarn::host

#endif
