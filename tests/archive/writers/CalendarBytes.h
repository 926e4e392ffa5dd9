// CalendarBytes.h - recurrences and time zones as items keep them (MS-OXOCAL 2.2.1.39 to 2.2.1.44).
#ifndef TARN_TESTS_ARCHIVE_CALENDARBYTES_H
#define TARN_TESTS_ARCHIVE_CALENDARBYTES_H

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "archive/mapi/FakeMessage.h"

namespace tarn::archive {

using mapi::LittleEndian;
using mapi::Wide;

// Minutes since 1601 of a day, and of a minute in it.
inline uint32_t Minutes(int year, unsigned month, unsigned day, uint32_t minute = 0) {
  const auto days =
      std::chrono::sys_days(std::chrono::year(year) / std::chrono::month(month) /
                            std::chrono::day(day)) -
      std::chrono::sys_days(std::chrono::year(1601) / std::chrono::January / std::chrono::day(1));
  return static_cast<uint32_t>(days.count()) * 1440 + minute;
}

struct PatternBytes {
  uint16_t frequency = 0x200A;
  uint16_t type = 0;
  uint16_t calendar = 0;
  uint32_t period = 1440;
  std::vector<uint32_t> numbers{};  // of the type
  uint32_t end = 0x2023;
  uint32_t count = 0;
  uint32_t firstDayOfWeek = 0;
  std::vector<uint32_t> deleted{};
  std::vector<uint32_t> modified{};
  uint32_t firstDay = Minutes(2024, 5, 1);
  uint32_t lastDay = 0x5AE980DF;

  std::string bytes() const {
    std::string all = LittleEndian(0x3004, 2) + LittleEndian(0x3004, 2) +
                      LittleEndian(frequency, 2) + LittleEndian(type, 2) +
                      LittleEndian(calendar, 2) + LittleEndian(0, 4) + LittleEndian(period, 4) +
                      LittleEndian(0, 4);
    for (const uint32_t number : numbers) all += LittleEndian(number, 4);
    all += LittleEndian(end, 4) + LittleEndian(count, 4) + LittleEndian(firstDayOfWeek, 4);
    for (const auto* days : {&deleted, &modified}) {
      all += LittleEndian(days->size(), 4);
      for (const uint32_t day : *days) all += LittleEndian(day, 4);
    }
    return all + LittleEndian(firstDay, 4) + LittleEndian(lastDay, 4);
  }
};

struct ExceptionBytes {
  uint32_t start = 0;
  uint32_t end = 0;
  uint32_t original = 0;
  uint16_t flags = 0;
  std::string fields;     // as the flags say, in their order
  std::string wideTexts;  // likewise
};

inline std::string Text8(std::string_view text) {
  return LittleEndian(text.size() + 1, 2) + LittleEndian(text.size(), 2) + std::string(text);
}
inline std::string Text16(std::u16string_view text) {
  return LittleEndian(text.size(), 2) + Wide(text);
}

inline std::string AppointmentBytes(const PatternBytes& pattern, uint32_t startMinute,
                                    const std::vector<ExceptionBytes>& exceptions,
                                    uint32_t version = 0x3009) {
  std::string all = pattern.bytes() + LittleEndian(0x3006, 4) + LittleEndian(version, 4) +
                    LittleEndian(startMinute, 4) + LittleEndian(startMinute + 60, 4) +
                    LittleEndian(exceptions.size(), 2);
  for (const ExceptionBytes& exception : exceptions) {
    all += LittleEndian(exception.start, 4) + LittleEndian(exception.end, 4) +
           LittleEndian(exception.original, 4) + LittleEndian(exception.flags, 2) +
           exception.fields;
  }
  all += LittleEndian(0, 4);
  for (const ExceptionBytes& exception : exceptions) {
    if (version >= 0x3009) all += LittleEndian(4, 4) + LittleEndian(0, 4);
    all += LittleEndian(0, 4);
    if ((exception.flags & 0x11) == 0) continue;
    all += LittleEndian(exception.start, 4) + LittleEndian(exception.end, 4) +
           LittleEndian(exception.original, 4) + exception.wideTexts + LittleEndian(0, 4);
  }
  return all + LittleEndian(0, 4);
}

// The nth day of the week of a month at an hour, as a SYSTEMTIME.
inline std::string ChangeBytes(unsigned month, unsigned weekday, unsigned nth, unsigned hour) {
  return LittleEndian(0, 2) + LittleEndian(month, 2) + LittleEndian(weekday, 2) +
         LittleEndian(nth, 2) + LittleEndian(hour, 2) + LittleEndian(0, 6);
}

// Central Europe: an hour east of Greenwich, two from the last Sunday of March to that of October.
inline std::string BerlinBiases() {
  return LittleEndian(static_cast<uint32_t>(-60), 4) + LittleEndian(0, 4) +
         LittleEndian(static_cast<uint32_t>(-60), 4);
}
inline std::string BerlinStruct() {
  return BerlinBiases() + LittleEndian(0, 2) + ChangeBytes(10, 0, 5, 3) + LittleEndian(0, 2) +
         ChangeBytes(3, 0, 5, 2);
}

inline std::string RuleBytes(uint16_t flags, const std::string& biases) {
  return LittleEndian(0x0102, 2) + LittleEndian(0x3E, 2) + LittleEndian(flags, 2) +
         LittleEndian(2000, 2) + std::string(14, '\0') + biases + ChangeBytes(10, 0, 5, 3) +
         ChangeBytes(3, 0, 5, 2);
}
inline std::string DefinitionBytes(std::u16string_view name,
                                   const std::vector<std::string>& rules) {
  const std::string header = LittleEndian(2, 2) + LittleEndian(name.size(), 2) + Wide(name) +
                             LittleEndian(rules.size(), 2);
  std::string all = LittleEndian(0x0102, 2) + LittleEndian(header.size(), 2) + header;
  for (const std::string& rule : rules) all += rule;
  return all;
}

}  // namespace tarn::archive

#endif
