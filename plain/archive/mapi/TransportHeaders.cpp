#include "archive/mapi/TransportHeaders.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <vector>

#include "archive/text/AsciiText.h"

namespace tarn::archive::mapi {
namespace {

constexpr std::string_view kLineBlanks = " \t\r\n";

std::string_view TakeLine(std::string_view& text) {
  const size_t end = std::min(text.find('\n'), text.size());
  std::string_view line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return line;
}

// Words of a date: runs of letters, of digits, and signs with the digits after them. Comments in
// brackets are no words.
std::vector<std::string_view> WordsOfDate(std::string_view date) {
  std::vector<std::string_view> words;
  constexpr size_t kMostWords = 16;
  size_t depth = 0;
  for (size_t at = 0; at < date.size() && words.size() < kMostWords;) {
    const char first = date[at];
    if (first == '(') ++depth;
    if (first == ')' && depth != 0) --depth;
    const auto isOf = [&](size_t place, bool digits) {
      const char character = LowerAscii(date[place]);
      return digits ? character >= '0' && character <= '9' : character >= 'a' && character <= 'z';
    };
    const bool isSign = first == '+' || first == '-';
    size_t end = at + 1;
    if (depth == 0 && (isSign || isOf(at, true) || isOf(at, false))) {
      const bool digits = isSign || isOf(at, true);
      while (end < date.size() && isOf(end, digits)) ++end;
      words.push_back(date.substr(at, end - at));
    }
    at = end;
  }
  return words;
}

std::optional<int> NumberOf(std::string_view digits) {
  if (digits.empty() || digits.size() > 4) return std::nullopt;
  int number = 0;
  for (const char digit : digits) {
    if (digit < '0' || digit > '9') return std::nullopt;
    number = 10 * number + (digit - '0');
  }
  return number;
}

std::optional<unsigned> MonthOf(std::string_view word) {
  constexpr std::array<std::string_view, 12> kMonths = {"jan", "feb", "mar", "apr", "may", "jun",
                                                        "jul", "aug", "sep", "oct", "nov", "dec"};
  for (size_t month = 0; month < kMonths.size(); ++month) {
    if (EqualsNoCase(word.substr(0, 3), kMonths[month])) {
      return static_cast<unsigned>(month + 1);
    }
  }
  return std::nullopt;
}

// Minutes east of Greenwich; none for a zone that tells nothing.
std::optional<int32_t> ZoneOf(std::string_view word) {
  if (word.size() == 5 && (word[0] == '+' || word[0] == '-')) {
    const std::optional<int> digits = NumberOf(word.substr(1));
    if (!digits || (word[0] == '-' && *digits == 0) || *digits % 100 > 59) return std::nullopt;
    const int32_t minutes = *digits / 100 * 60 + *digits % 100;
    if (minutes > 18 * 60) return std::nullopt;
    return word[0] == '-' ? -minutes : minutes;
  }
  struct Zone {
    std::string_view name;
    int32_t hours;
  };
  constexpr Zone kZones[] = {{"ut", 0},   {"gmt", 0},  {"utc", 0},  {"z", 0},
                             {"est", -5}, {"edt", -4}, {"cst", -6}, {"cdt", -5},
                             {"mst", -7}, {"mdt", -6}, {"pst", -8}, {"pdt", -7}};
  for (const Zone& zone : kZones) {
    if (EqualsNoCase(word, zone.name)) return zone.hours * 60;
  }
  return std::nullopt;
}

}  // namespace

std::string HeaderField(std::string_view headers, std::string_view name) {
  std::string value;
  bool isFound = false;
  bool hasField = false;
  while (!headers.empty()) {
    const std::string_view line = TakeLine(headers);
    // The text of the mail may come after its headers.
    if (line.empty() && hasField) break;
    const bool isContinued = !line.empty() && (line[0] == ' ' || line[0] == '\t');
    if (isFound) {
      if (!isContinued) break;
      value.append(" ").append(Trimmed(line, kLineBlanks));
    } else if (!isContinued) {
      const size_t colon = line.find(':');
      hasField = hasField || colon != line.npos;
      isFound =
          colon != line.npos && EqualsNoCase(Trimmed(line.substr(0, colon), kLineBlanks), name);
      if (isFound) value = Trimmed(line.substr(colon + 1), kLineBlanks);
    }
  }
  return value;
}

std::optional<Moment> ParseMailDate(std::string_view date) {
  std::vector<std::string_view> words = WordsOfDate(date);
  // "Wed, 1 May 2024 12:34:56 +0200": the day of the week and the seconds may be missing. A hyphen
  // between day, month and year is read too.
  for (std::string_view& word : words) {
    if (word.size() > 1 && word[0] == '-' && word.size() != 5) word.remove_prefix(1);
  }
  std::erase(words, "-");
  if (!words.empty() && !NumberOf(words[0])) words.erase(words.begin());
  if (words.size() < 5) return std::nullopt;
  const std::optional<int> day = NumberOf(words[0]);
  const std::optional<unsigned> month = MonthOf(words[1]);
  std::string_view yearWord = words[2];
  if (yearWord.size() == 5 && yearWord[0] == '-') yearWord.remove_prefix(1);
  std::optional<int> year = NumberOf(yearWord);
  const std::optional<int> hour = NumberOf(words[3]);
  const std::optional<int> minute = NumberOf(words[4]);
  const bool hasSeconds = words.size() > 5 && NumberOf(words[5]).has_value();
  const int second = hasSeconds ? *NumberOf(words[5]) : 0;
  if (!day || !month || !year || !hour || !minute) return std::nullopt;
  if (yearWord.size() == 2) *year += *year < 50 ? 2000 : 1900;
  if (yearWord.size() == 3) *year += 1900;
  if (*year < 1601 || *hour > 23 || *minute > 59 || second > 60) return std::nullopt;
  const std::chrono::year_month_day calendar(std::chrono::year(*year), std::chrono::month(*month),
                                             std::chrono::day(static_cast<unsigned>(*day)));
  if (!calendar.ok()) return std::nullopt;
  const size_t zoneAt = hasSeconds ? 6 : 5;
  const std::optional<int32_t> zone =
      zoneAt < words.size() ? ZoneOf(words[zoneAt]) : std::optional<int32_t>();
  const int64_t days = std::chrono::sys_days(calendar).time_since_epoch().count();
  const int64_t minutes = (days * 24 + *hour) * 60 + *minute - zone.value_or(0);
  return Moment{minutes * 60 + second, zone};
}

std::string AddressOfField(std::string_view field) {
  const size_t open = field.rfind('<');
  const size_t close = open == field.npos ? field.npos : field.find('>', open);
  std::string_view address = close == field.npos ? field : field.substr(open + 1, close - open - 1);
  address = Trimmed(address, kLineBlanks);
  const bool isAddress = address.find('@') != address.npos &&
                         std::none_of(address.begin(), address.end(), [](char character) {
                           return kLineBlanks.find(character) != kLineBlanks.npos ||
                                  character == '<' || character == ',' || character == ';' ||
                                  character == '(' || character == '"';
                         });
  return isAddress ? std::string(address) : std::string();
}

}  // namespace tarn::archive::mapi
