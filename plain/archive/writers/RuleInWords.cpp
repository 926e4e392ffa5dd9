#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <vector>

#include "archive/writers/ItemDetails.h"

namespace tarn::archive {
namespace {

constexpr std::array<std::pair<std::string_view, const char*>, 7> kDayWords = {
    {{"SU", "Sunday"},
     {"MO", "Monday"},
     {"TU", "Tuesday"},
     {"WE", "Wednesday"},
     {"TH", "Thursday"},
     {"FR", "Friday"},
     {"SA", "Saturday"}}};
constexpr std::array<const char*, 12> kMonthWords = {
    "January", "February", "March",     "April",   "May",      "June",
    "July",    "August",   "September", "October", "November", "December"};
constexpr std::array<const char*, 5> kNth = {"last", "first", "second", "third", "fourth"};

std::vector<std::string> Split(std::string_view text, char at) {
  std::vector<std::string> parts;
  while (!text.empty()) {
    const size_t end = std::min(text.find(at), text.size());
    parts.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return parts;
}

std::string NthText(const std::string& number) {
  const int nth = std::atoi(number.c_str());
  return kNth[nth >= 1 && nth <= 4 ? static_cast<size_t>(nth) : 0];
}

// "Monday", of "MO" and of "2MO".
std::string DayName(const std::string& day) {
  for (const auto& [name, word] : kDayWords) {
    if (day.ends_with(name)) return word;
  }
  return day;
}

// "Monday, Tuesday and Friday", or what such days are together.
std::string DaysInWords(const std::vector<std::string>& days) {
  const auto has = [&](std::string_view day) {
    return std::find(days.begin(), days.end(), day) != days.end();
  };
  const bool hasEnd = has("SA") || has("SU");
  if (days.size() == 7) return "day";
  if (days.size() == 5 && !hasEnd) return "weekday";
  if (days.size() == 2 && has("SA") && has("SU")) return "day of a weekend";
  std::string text;
  for (size_t index = 0; index < days.size(); ++index) {
    if (index != 0) text += index + 1 == days.size() ? " and " : ", ";
    text += DayName(days[index]);
  }
  return text;
}

class Rule {
 public:
  explicit Rule(std::string_view text) {
    for (const std::string& part : Split(text, ';')) {
      const size_t equals = std::min(part.find('='), part.size());
      parts_[part.substr(0, equals)] = part.substr(std::min(equals + 1, part.size()));
    }
  }

  std::string words() const {
    const std::string frequency = part("FREQ");
    if (frequency == "DAILY") return every("day");
    if (frequency == "WEEKLY") return every("week") + daysOfWeek();
    if (frequency == "MONTHLY") return every("month") + daysOfMonth();
    if (frequency == "YEARLY") return every("year") + daysOfMonth() + " of " + month();
    return {};
  }

 private:
  std::string part(const std::string& name) const {
    const auto found = parts_.find(name);
    return found == parts_.end() ? std::string() : found->second;
  }

  std::string every(const std::string& unit) const {
    const std::string interval = part("INTERVAL");
    return interval.empty() ? "every " + unit : "every " + interval + " " + unit + "s";
  }

  std::string daysOfWeek() const {
    const std::vector<std::string> days = Split(part("BYDAY"), ',');
    if (days.size() == 7) return {};
    const std::string words = DaysInWords(days);
    return words == "weekday"                             ? " from Monday to Friday"
           : days.size() == 2 && words.starts_with("day") ? " on Saturday and Sunday"
                                                          : " on " + words;
  }

  std::string daysOfMonth() const {
    const std::string days = part("BYDAY");
    if (!days.empty()) {
      const std::string place = part("BYSETPOS");
      return " on the " + NthText(place.empty() ? days : place) + " " +
             DaysInWords(Split(days, ','));
    }
    // Of several the last that the month has.
    const std::vector<std::string> numbers = Split(part("BYMONTHDAY"), ',');
    if (numbers.empty()) return {};
    if (numbers.back() == "-1") return " on the last day";
    return " on day " + numbers.back() + (numbers.size() > 1 ? " or the last one" : "");
  }

  std::string month() const {
    const int number = std::atoi(part("BYMONTH").c_str());
    return number >= 1 && number <= 12 ? kMonthWords[static_cast<size_t>(number - 1)] : "the year";
  }

  std::map<std::string, std::string> parts_;
};

}  // namespace

std::string RuleInWords(std::string_view rule) { return Rule(rule).words(); }

}  // namespace tarn::archive
