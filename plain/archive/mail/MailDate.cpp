#include "archive/mail/MailDate.h"

#include <gmime/gmime.h>

#include <algorithm>
#include <array>
#include <string>

#include "archive/mail/GObjectPtr.h"
#include "archive/text/AsciiText.h"

namespace tarn::archive::mail {
namespace {

// Longer ones are no dates.
constexpr size_t kLongestDate = 256;

// Whether a date of offset zero says so.
bool TellsUtc(std::string_view date) {
  constexpr std::array<std::string_view, 5> kUtc{"+0000", "gmt", "utc", " ut", " z"};
  return std::any_of(kUtc.begin(), kUtc.end(),
                     [&](std::string_view name) { return ContainsNoCase(date, name); });
}

constexpr std::string_view kMonths = "JanFebMarAprMayJunJulAugSepOctNovDec";

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// The number that `count` digits at the start of a text are, which are taken from it.
std::optional<int> TakeNumber(std::string_view& text, size_t count) {
  if (text.size() < count) return std::nullopt;
  int number = 0;
  for (const char digit : text.substr(0, count)) {
    if (!IsDigit(digit)) return std::nullopt;
    number = number * 10 + (digit - '0');
  }
  text.remove_prefix(count);
  return number;
}

bool TakeOneOf(std::string_view& text, std::string_view chars) {
  if (text.empty() || chars.find(text[0]) == std::string_view::npos) return false;
  text.remove_prefix(1);
  return true;
}

// "+02:00", "+0200", "+02", "Z"; minutes, where they are known. False for anything else.
bool ReadIsoZone(std::string_view zone, std::optional<int32_t>& minutes) {
  zone = Trimmed(zone);
  if (zone.empty()) return true;
  if (zone == "Z" || zone == "z") {
    minutes = 0;
    return true;
  }
  const bool isWest = zone[0] == '-';
  if (!TakeOneOf(zone, "+-")) return false;
  const std::optional<int> hour = TakeNumber(zone, 2);
  TakeOneOf(zone, ":");
  const std::optional<int> minute = zone.empty() ? 0 : TakeNumber(zone, 2);
  if (!hour || !minute || *hour > 23 || *minute > 59 || !zone.empty()) return false;
  const int all = *hour * 60 + *minute;
  if (all != 0 || !isWest) minutes = isWest ? -all : all;
  return true;
}

// "2024-05-01T12:30:00.5+02:00" (ISO 8601), with a blank for the "T" too.
std::optional<Moment> MomentOfIso(std::string_view date) {
  const std::optional<int> year = TakeNumber(date, 4);
  if (!year || !TakeOneOf(date, "-")) return std::nullopt;
  const std::optional<int> month = TakeNumber(date, 2);
  if (!month || !TakeOneOf(date, "-")) return std::nullopt;
  const std::optional<int> day = TakeNumber(date, 2);
  if (!day || !TakeOneOf(date, "Tt ")) return std::nullopt;
  const std::optional<int> hour = TakeNumber(date, 2);
  if (!hour || !TakeOneOf(date, ":")) return std::nullopt;
  const std::optional<int> minute = TakeNumber(date, 2);
  if (!minute) return std::nullopt;
  std::optional<int> second = 0;
  if (TakeOneOf(date, ":")) {
    second = TakeNumber(date, 2);
    if (TakeOneOf(date, ".,"))
      date = date.substr(std::min(date.find_first_not_of("0123456789"), date.size()));
  }
  std::optional<int32_t> zone;
  if (!second || !ReadIsoZone(date, zone)) return std::nullopt;
  const GDatePtr local(
      g_date_time_new_utc(*year, *month, *day, *hour, *minute, std::min(*second, 59)));
  if (local == nullptr) return std::nullopt;
  return Moment{g_date_time_to_unix(local.get()) - int64_t{60} * zone.value_or(0), zone};
}

// Where the last day of the week is in a line of an mbox, with the blank before it; 0 without one.
size_t MboxDate(std::string_view line) {
  constexpr std::array<std::string_view, 7> kDays{" Sun", " Mon", " Tue", " Wed",
                                                  " Thu", " Fri", " Sat"};
  for (size_t at = line.size(); at > 4; --at) {
    const std::string_view day = line.substr(at - 5, 4);
    const char after = line[at - 1];
    if ((after == ' ' || after == ',') &&
        std::find(kDays.begin(), kDays.end(), day) != kDays.end()) {
      return at - 5;
    }
  }
  return 0;
}

}  // namespace

std::optional<Moment> MomentOfDate(std::string_view date) {
  date = Trimmed(date);
  if (date.empty() || date.size() > kLongestDate) return std::nullopt;
  if (const std::optional<Moment> moment = MomentOfIso(date)) return moment;
  const GDatePtr decoded(g_mime_utils_header_decode_date(std::string(date).c_str()));
  if (decoded == nullptr) return std::nullopt;
  Moment moment{g_date_time_to_unix(decoded.get()), std::nullopt};
  const auto minutes =
      static_cast<int32_t>(g_date_time_get_utc_offset(decoded.get()) / G_TIME_SPAN_MINUTE);
  if (minutes != 0 || TellsUtc(date)) moment.offsetMinutes = minutes;
  return moment;
}

std::optional<Moment> MomentOfMboxLine(std::string_view line) {
  const size_t date = MboxDate(line);
  return date == 0 ? std::nullopt : MomentOfDate(line.substr(date));
}

bool HasMboxDate(std::string_view line) {
  const size_t date = MboxDate(line);
  if (date == 0) return false;
  line.remove_prefix(date);
  bool hasMonth = false;
  bool hasTime = false;
  bool hasYear = false;
  while (!line.empty()) {
    const std::string_view word = line.substr(0, line.find(' '));
    hasMonth |=
        word.size() == 3 && kMonths.find(word) < kMonths.size() && kMonths.find(word) % 3 == 0;
    hasTime |= word.size() >= 4 && IsDigit(word[0]) && word.find(':') <= 2;
    hasYear |= word.size() == 4 && std::all_of(word.begin(), word.end(), IsDigit);
    line.remove_prefix(std::min(word.size() + 1, line.size()));
  }
  return hasMonth && hasTime && hasYear;
}

std::optional<Moment> MomentOfReceived(std::string_view field) {
  const size_t semicolon = field.rfind(';');
  if (semicolon == std::string_view::npos) return std::nullopt;
  return MomentOfDate(field.substr(semicolon + 1));
}

}  // namespace tarn::archive::mail
