// Windows' runtime takes a zone from TZ as a name, an offset and, for summer time by the rules of
// the United States, a second name. Wine's runtime (8.0) reads the second name but knows no rules
// for it, and then follows those of the machine only while TZ is not set. So where the machine is
// in the zone that a test asks for, TZ is not set: scripts/wine-run starts Wine in one with summer
// time.
#include "support/LocalZone.h"

#include <windows.h>

#include <stdlib.h>
#include <time.h>

#include <string_view>

namespace tarn::test {
namespace {

constexpr std::string_view kEastern = "EST5EDT";

bool IsSunday(const SYSTEMTIME& day, int month, int week) {
  return day.wMonth == month && day.wDay == week && day.wDayOfWeek == 0;
}

bool IsMachineEastern() {
  TIME_ZONE_INFORMATION zone = {};
  GetTimeZoneInformation(&zone);
  return zone.Bias == 300 && zone.DaylightBias == -60 && IsSunday(zone.DaylightDate, 3, 2) &&
         IsSunday(zone.StandardDate, 11, 1);
}

void SetZone(const std::string& zone) {
  _putenv_s("TZ", zone.c_str());
  _tzset();
}

}  // namespace

LocalZone::LocalZone() {
  const char* const zone = getenv("TZ");
  if (zone != nullptr) before_ = zone;
  use("UTC0");
}

LocalZone::~LocalZone() { SetZone(before_.value_or("")); }

void LocalZone::use(const char* zone) {
  std::string_view name = zone;
  name = name.substr(0, name.find(','));
  SetZone(name == kEastern && IsMachineEastern() ? std::string() : std::string(name));
}

}  // namespace tarn::test
