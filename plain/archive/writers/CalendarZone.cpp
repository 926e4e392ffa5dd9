#include "archive/writers/CalendarZone.h"

#include <chrono>
#include <utility>

#include "archive/mapi/PropertyValues.h"
#include "archive/writers/ItemText.h"
#include "archive/writers/LittleBytes.h"

namespace tarn::archive {
namespace {

constexpr int32_t kLargestBias = 24 * 60;

// SYSTEMTIME (MS-DTYP 2.3.13), where the day is the nth such day of the week.
ClockChange ReadChange(LittleBytes& bytes) {
  ClockChange change;
  bytes.u16();
  change.month = bytes.u16();
  change.weekday = bytes.u16();
  change.nth = bytes.u16();
  change.minute = bytes.u16() * 60;
  change.minute += bytes.u16();
  bytes.u16();
  bytes.u16();
  return change;
}

bool IsFit(const ClockChange& change) {
  return change.month <= 12 && change.weekday <= 6 && change.nth <= 5 &&
         (change.month == 0 || change.nth != 0) && change.minute < 24 * 60;
}

struct Biases {
  int32_t zone = 0;
  int32_t standard = 0;
  int32_t daylight = 0;
};

bool IsSmall(int32_t bias) { return bias > -kLargestBias && bias < kLargestBias; }

std::optional<CalendarZone> MakeZone(std::string_view name, const Biases& biases,
                                     const ClockChange& toStandard, const ClockChange& toDaylight) {
  if (!IsSmall(biases.zone) || !IsSmall(biases.standard) || !IsSmall(biases.daylight) ||
      !IsFit(toStandard) || !IsFit(toDaylight)) {
    return std::nullopt;
  }
  CalendarZone zone;
  zone.name = OneLine(name);
  if (zone.name.empty()) zone.name = "Local time";
  zone.standardOffset = -(biases.zone + biases.standard);
  zone.daylightOffset = -(biases.zone + biases.daylight);
  if (!IsSmall(zone.standardOffset) || !IsSmall(zone.daylightOffset)) return std::nullopt;
  zone.toStandard = toStandard;
  zone.toDaylight = toDaylight;
  return zone;
}

}  // namespace

int64_t TimeOfChange(const ClockChange& change, int year) {
  namespace chrono = std::chrono;
  const chrono::year_month month(chrono::year(year), chrono::month(change.month));
  const chrono::weekday day(change.weekday);
  const chrono::sys_days found =
      change.nth >= 5 ? chrono::sys_days(month / chrono::weekday_last(day))
                      : chrono::sys_days(month / chrono::weekday_indexed(day, change.nth));
  return found.time_since_epoch().count() * kSecondsOfDay + change.minute * int64_t{60};
}

int64_t CalendarZone::localOf(int64_t utc) const {
  const int64_t standard = utc + standardOffset * int64_t{60};
  if (!changes()) return standard;
  const int year = CalendarTimeOf(standard).year;
  const int64_t starts = TimeOfChange(toDaylight, year) - standardOffset * int64_t{60};
  const int64_t ends = TimeOfChange(toStandard, year) - daylightOffset * int64_t{60};
  const bool isDaylight = starts < ends ? utc >= starts && utc < ends : utc >= starts || utc < ends;
  return utc + (isDaylight ? daylightOffset : standardOffset) * int64_t{60};
}

int64_t CalendarZone::utcOf(int64_t local) const {
  const int64_t early = local - daylightOffset * int64_t{60};
  return localOf(early) == local ? early : local - standardOffset * int64_t{60};
}

std::optional<CalendarZone> ReadZoneStruct(std::string_view blob, std::string_view name) {
  LittleBytes bytes(blob);
  Biases biases;
  biases.zone = bytes.i32();
  biases.standard = bytes.i32();
  biases.daylight = bytes.i32();
  bytes.u16();
  const ClockChange toStandard = ReadChange(bytes);
  bytes.u16();
  const ClockChange toDaylight = ReadChange(bytes);
  if (bytes.isShort()) return std::nullopt;
  return MakeZone(name, biases, toStandard, toDaylight);
}

std::optional<CalendarZone> ReadZoneDefinition(std::string_view blob) {
  constexpr uint16_t kVersion = 0x0102;
  constexpr uint16_t kInUse = 2;
  constexpr size_t kUnused = 14;
  LittleBytes bytes(blob);
  if (bytes.u16() != kVersion) return std::nullopt;
  LittleBytes header(bytes.take(bytes.u16()));
  header.u16();
  const std::string name = mapi::Utf8OfText16(header.take(size_t{2} * header.u16()));
  const uint16_t rules = header.u16();
  if (header.isShort() || bytes.isShort()) return std::nullopt;
  std::optional<CalendarZone> zone;
  for (uint16_t at = 0; at < rules; ++at) {
    bytes.u16();
    bytes.u16();
    const uint16_t flags = bytes.u16();
    bytes.u16();
    bytes.take(kUnused);
    Biases biases;
    biases.zone = bytes.i32();
    biases.standard = bytes.i32();
    biases.daylight = bytes.i32();
    const ClockChange toStandard = ReadChange(bytes);
    const ClockChange toDaylight = ReadChange(bytes);
    if (bytes.isShort()) break;
    std::optional<CalendarZone> rule = MakeZone(name, biases, toStandard, toDaylight);
    if (rule) zone = std::move(rule);
    if ((flags & kInUse) != 0 && zone) break;
  }
  return zone;
}

}  // namespace tarn::archive
