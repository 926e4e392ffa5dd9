#include <ctime>

#include "Platform/LocalTime.h"
#include "render/HeaderLabels.h"

namespace tarn {
namespace {

constexpr uint64_t kFileTimeOf1970 = 116444736000000000;
constexpr int64_t kFileTimeUnitsPerSecond = 10000000;
constexpr size_t kMostCharacters = 100;

// Times near the ends of the signed range wrap around; they name no real moment anyway.
int64_t SecondsSince1970(int64_t fileTime) {
  const uint64_t units = static_cast<uint64_t>(fileTime) - kFileTimeOf1970;
  return static_cast<int64_t>(units) / kFileTimeUnitsPerSecond;
}

}  // namespace

int32_t FormatFileTime(int64_t fileTime, SizedBytes& text) {
  std::tm fields = {};
  if (!platform::BreakDownLocalTime(SecondsSince1970(fileTime), fields)) return StatusTimeFailed;

  char formatted[kMostCharacters];
  const size_t length =
      std::strftime(formatted, sizeof(formatted), "%a %b %d, %Y %I:%M %p", &fields);
  if (length == 0) return StatusTimeFailed;
  return AppendTerminated(text, formatted, length);
}

}  // namespace tarn
