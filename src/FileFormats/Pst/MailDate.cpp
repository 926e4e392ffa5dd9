#include "FileFormats/Pst/MailDate.h"

#include <cstdio>
#include <ctime>
#include <string_view>

#include "Common/ApiUtils.h"
#include "Common/ByteSearch.h"

namespace tarn {
namespace {

constexpr std::string_view kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr int kFields = 7;
constexpr int kFirstYear = 1900;

// 0 to 11, or -1.
int FindMonth(std::string_view name) {
  for (int month = 0; month < 12; ++month) {
    if (EqualsIgnoringCase(name, kMonths[month])) return month;
  }
  return -1;
}

}  // namespace

int64_t ParseMailDate(const char16_t* text) {
  if (text == nullptr) return 0;
  const uint64_t units = WideLength(text);
  const auto block = AllocateZeroBlock<char>(3 * units + 1, TARN_HERE);
  if (!block) return 0;
  const int64_t converted = KernelWideToUtf8(text, static_cast<int64_t>(units), block.get(),
                                             static_cast<int64_t>(3 * units + 1));
  if (converted <= 0) block[0] = '\0';

  int day = 0;
  int year = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
  char month[4] = {};
  char zone[10] = {};
  const int stored = std::sscanf(block.get(), "%*s %d %3s %d %d:%d:%d %9s", &day, month, &year,
                                 &hour, &minute, &second, zone);
  if (stored != kFields) return 0;

  std::tm fields = {};
  fields.tm_mon = FindMonth(month);
  if (fields.tm_mon < 0) return 0;
  fields.tm_mday = day;
  fields.tm_year =
      static_cast<int>(static_cast<unsigned>(year) - static_cast<unsigned>(kFirstYear));
  fields.tm_hour = hour;
  fields.tm_min = minute;
  fields.tm_sec = second;
  fields.tm_isdst = -1;
  const std::time_t seconds = std::mktime(&fields);
  return seconds < 0 ? 0 : static_cast<int64_t>(seconds);
}

uint64_t ParseDecimal(const char16_t* text) {
  uint64_t value = 0;
  for (; *text >= u'0' && *text <= u'9'; ++text) {
    value = value * 10 + static_cast<uint64_t>(*text - u'0');
  }
  return value;
}

}  // namespace tarn
