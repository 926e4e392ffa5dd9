#include "FileFormats/Pst/MailDate.h"

#include <algorithm>
#include <charconv>
#include <ctime>
#include <optional>
#include <string_view>
#include <system_error>

#include "Common/ApiUtils.h"
#include "Common/ByteSearch.h"
#include "Platform/LocalTime.h"

namespace tarn {
namespace {

constexpr std::string_view kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr int kFirstYear = 1900;

struct DateWords {
  int day = 0;
  std::string_view month;
  int year = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
};

// Takes words and numbers as the scanning functions of C do, white space before each skipped. Those
// leave a number beyond int undefined; here it is none. Once something is missing, everything after
// it is.
class DateScanner {
 public:
  explicit DateScanner(std::string_view text) : rest_(text) {}

  // At most so many characters up to the next white space, at least one.
  std::string_view word(size_t most) {
    skipSpace();
    const std::string_view word = rest_.substr(0, std::min(rest_.find_first_of(kSpace), most));
    good_ = good_ && !word.empty();
    rest_.remove_prefix(word.size());
    return word;
  }

  // Decimal digits with or without a sign.
  int number() {
    skipSpace();
    const bool isPlus = rest_.size() > 1 && rest_[0] == '+' && rest_[1] != '-';
    const char* const begin = rest_.data() + (isPlus ? 1 : 0);
    int value = 0;
    const auto [end, error] = std::from_chars(begin, rest_.data() + rest_.size(), value);
    good_ = good_ && error == std::errc();
    rest_.remove_prefix(static_cast<size_t>(end - rest_.data()));
    return value;
  }

  void colon() {
    good_ = good_ && !rest_.empty() && rest_[0] == ':';
    if (good_) rest_.remove_prefix(1);
  }

  bool good() const { return good_; }

 private:
  static constexpr std::string_view kSpace = " \t\n\v\f\r";

  void skipSpace() { rest_.remove_prefix(std::min(rest_.find_first_not_of(kSpace), rest_.size())); }

  std::string_view rest_;
  bool good_ = true;
};

// "%*s %d %3s %d %d:%d:%d %9s"; false unless everything is there.
bool ScanDate(std::string_view text, DateWords& date) {
  DateScanner scanner(text);
  scanner.word(std::string_view::npos);  // the weekday
  date.day = scanner.number();
  date.month = scanner.word(3);
  date.year = scanner.number();
  date.hour = scanner.number();
  scanner.colon();
  date.minute = scanner.number();
  scanner.colon();
  date.second = scanner.number();
  scanner.word(9);  // the zone
  return scanner.good();
}

// From 0 on; none for a name that no month has.
std::optional<int> FindMonth(std::string_view name) {
  for (int month = 0; month < 12; ++month) {
    if (EqualsIgnoringCase(name, kMonths[month])) return month;
  }
  return std::nullopt;
}

}  // namespace

int64_t ParseMailDate(const char16_t* text) {
  if (text == nullptr) return 0;
  const uint64_t units = WideLength(text);
  const auto block = AllocateZeroBlock<char>(3 * units + 1, TARN_HERE);
  if (!block) return 0;
  if (ConvertToUtf8({text, units}, {block.get(), 3 * units + 1}) == 0) block[0] = '\0';

  DateWords date;
  if (!ScanDate(block.get(), date)) return 0;

  const std::optional<int> month = FindMonth(date.month);
  if (!month) return 0;
  std::tm fields = {};
  fields.tm_mon = *month;
  fields.tm_mday = date.day;
  fields.tm_year =
      static_cast<int>(static_cast<unsigned>(date.year) - static_cast<unsigned>(kFirstYear));
  fields.tm_hour = date.hour;
  fields.tm_min = date.minute;
  fields.tm_sec = date.second;
  fields.tm_isdst = -1;
  return std::max<int64_t>(platform::SecondsFromLocalTime(fields), 0);
}

uint64_t ParseDecimal(const char16_t* text) {
  uint64_t value = 0;
  for (; *text >= u'0' && *text <= u'9'; ++text) {
    value = value * 10 + static_cast<uint64_t>(*text - u'0');
  }
  return value;
}

}  // namespace tarn
