#include "pages/MailDates.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <optional>
#include <vector>

#include "Common/FileTime.h"

namespace tarn::host {
namespace {

namespace chrono = std::chrono;

struct Moment {
  chrono::year_month_day day;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int offset = 0;  // minutes east of Greenwich
};

std::string IsoText(const Moment& at) {
  const int year = static_cast<int>(at.day.year());
  if (!at.day.ok() || year < 1 || year > 9999) return {};
  const int offset = std::abs(at.offset);
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d%c%02d:%02d", year,
                static_cast<unsigned>(at.day.month()), static_cast<unsigned>(at.day.day()), at.hour,
                at.minute, at.second, at.offset < 0 ? '-' : '+', offset / 60, offset % 60);
  return text;
}

// The words between blanks; comments in brackets are none.
std::vector<std::string_view> WordsOf(std::string_view text) {
  std::vector<std::string_view> words;
  int depth = 0;
  size_t start = 0;
  const auto end = [&](size_t at) {
    if (depth == 0 && at > start) words.push_back(text.substr(start, at - start));
    start = at + 1;
  };
  for (size_t i = 0; i < text.size(); ++i) {
    const char byte = text[i];
    if (byte == '(') {
      end(i);
      ++depth;
    } else if (byte == ')') {
      depth = std::max(depth - 1, 0);
      start = i + 1;
    } else if (byte == ' ' || byte == '\t' || byte == ',' || byte == '\0') {
      end(i);
    }
  }
  end(text.size());
  return words;
}

std::optional<int> NumberOf(std::string_view text, size_t most) {
  int number = 0;
  const char* const end = text.data() + text.size();
  if (text.empty() || text.size() > most || text[0] == '-') return std::nullopt;
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

bool IsSameWord(std::string_view one, std::string_view other) {
  const auto lower = [](char byte) {
    return 'A' <= byte && byte <= 'Z' ? static_cast<char>(byte + 0x20) : byte;
  };
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [&](char a, char b) { return lower(a) == lower(b); });
}

std::optional<unsigned> MonthOf(std::string_view word) {
  constexpr std::array<std::string_view, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  for (unsigned i = 0; i < kMonths.size(); ++i) {
    if (IsSameWord(word.substr(0, 3), kMonths[i])) return i + 1;
  }
  return std::nullopt;
}

std::optional<int> YearOf(std::string_view word) {
  std::optional<int> year = NumberOf(word, 4);
  if (!year) return year;
  if (word.size() == 2) *year += *year < 50 ? 2000 : 1900;
  if (word.size() == 3) *year += 1900;
  return year;
}

// "10:00" or "10:00:59"; a leap second is the one before it.
bool ReadTime(std::string_view word, Moment& at) {
  const size_t colon = word.find(':');
  if (colon == std::string_view::npos) return false;
  const std::string_view rest = word.substr(colon + 1);
  const size_t second = rest.find(':');
  const std::optional<int> hours = NumberOf(word.substr(0, colon), 2);
  const std::optional<int> minutes = NumberOf(rest.substr(0, second), 2);
  const std::optional<int> seconds =
      second == std::string_view::npos ? 0 : NumberOf(rest.substr(second + 1), 2);
  if (!hours || !minutes || !seconds) return false;
  if (*hours > 23 || *minutes > 59 || *seconds > 60) return false;
  at.hour = *hours;
  at.minute = *minutes;
  at.second = std::min(*seconds, 59);
  return true;
}

int OffsetOf(std::string_view word) {
  struct Zone {
    std::string_view name;
    int hours;
  };
  constexpr Zone kZones[] = {{"EST", -5}, {"EDT", -4}, {"CST", -6}, {"CDT", -5},
                             {"MST", -7}, {"MDT", -6}, {"PST", -8}, {"PDT", -7}};
  for (const Zone& zone : kZones) {
    if (IsSameWord(word, zone.name)) return zone.hours * 60;
  }
  if (word.size() != 5 || (word[0] != '+' && word[0] != '-')) return 0;
  const std::optional<int> digits = NumberOf(word.substr(1), 4);
  if (!digits || *digits / 100 > 23 || *digits % 100 > 59) return 0;
  const int offset = *digits / 100 * 60 + *digits % 100;
  return word[0] == '-' ? -offset : offset;
}

}  // namespace

std::string IsoFromMailDate(std::string_view text) {
  std::vector<std::string_view> words = WordsOf(text);
  // The day of the week, which may be missing.
  if (!words.empty() && !NumberOf(words[0], 2)) words.erase(words.begin());
  if (words.size() < 4) return {};
  const std::optional<int> day = NumberOf(words[0], 2);
  const std::optional<unsigned> month = MonthOf(words[1]);
  const std::optional<int> year = YearOf(words[2]);
  Moment at;
  if (!day || !month || !year || !ReadTime(words[3], at)) return {};
  at.day = chrono::year_month_day(chrono::year(*year), chrono::month(*month),
                                  chrono::day(static_cast<unsigned>(*day)));
  if (words.size() > 4) at.offset = OffsetOf(words[4]);
  return IsoText(at);
}

std::string IsoFromFileTime(int64_t fileTime) {
  const chrono::sys_seconds time{chrono::seconds(SecondsSince1970(fileTime))};
  const auto days = chrono::floor<chrono::days>(time);
  // Beyond what the calendar can count.
  constexpr chrono::sys_days kFirst{chrono::year(1) / 1 / 1};
  constexpr chrono::sys_days kLast{chrono::year(9999) / 12 / 31};
  if (days < kFirst || days > kLast) return {};
  const chrono::hh_mm_ss clock(time - days);
  Moment at;
  at.day = chrono::year_month_day(days);
  at.hour = static_cast<int>(clock.hours().count());
  at.minute = static_cast<int>(clock.minutes().count());
  at.second = static_cast<int>(clock.seconds().count());
  return IsoText(at);
}

}  // namespace tarn::host
