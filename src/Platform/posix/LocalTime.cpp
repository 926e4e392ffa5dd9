#include "Platform/LocalTime.h"

namespace tarn::platform {

bool BreakDownLocalTime(int64_t secondsSince1970, std::tm& fields) noexcept {
  const std::time_t seconds{secondsSince1970};  // of 64 bits on every system that this is built for
  return localtime_r(&seconds, &fields) != nullptr;
}

int64_t SecondsFromLocalTime(std::tm& fields) noexcept { return std::mktime(&fields); }

}  // namespace tarn::platform
