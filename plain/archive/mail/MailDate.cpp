#include "archive/mail/MailDate.h"

#include <gmime/gmime.h>

#include <algorithm>
#include <array>
#include <string>

#include "archive/mail/AsciiText.h"
#include "archive/mail/GObjectPtr.h"

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

}  // namespace

std::optional<Moment> MomentOfDate(std::string_view date) {
  date = Trimmed(date);
  if (date.empty() || date.size() > kLongestDate) return std::nullopt;
  const GDatePtr decoded(g_mime_utils_header_decode_date(std::string(date).c_str()));
  if (decoded == nullptr) return std::nullopt;
  Moment moment{g_date_time_to_unix(decoded.get()), std::nullopt};
  const auto minutes =
      static_cast<int32_t>(g_date_time_get_utc_offset(decoded.get()) / G_TIME_SPAN_MINUTE);
  if (minutes != 0 || TellsUtc(date)) moment.offsetMinutes = minutes;
  return moment;
}

std::optional<Moment> MomentOfMboxLine(std::string_view line) {
  constexpr std::array<std::string_view, 7> kDays{" Sun ", " Mon ", " Tue ", " Wed ",
                                                  " Thu ", " Fri ", " Sat "};
  size_t last = 0;
  for (const std::string_view day : kDays) {
    const size_t at = line.rfind(day);
    if (at != std::string_view::npos) last = std::max(last, at);
  }
  if (last == 0) return std::nullopt;
  return MomentOfDate(line.substr(last));
}

std::optional<Moment> MomentOfReceived(std::string_view field) {
  const size_t semicolon = field.rfind(';');
  if (semicolon == std::string_view::npos) return std::nullopt;
  return MomentOfDate(field.substr(semicolon + 1));
}

}  // namespace tarn::archive::mail
