#include <ctime>

#include "Common/FileTime.h"
#include "Platform/LocalTime.h"
#include "render/HeaderLabels.h"

namespace tarn {
namespace {

constexpr size_t kMostCharacters = 100;

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
