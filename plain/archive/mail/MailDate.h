// MailDate.h - dates as mails write them (RFC 5322 3.3, and what programs write instead).
#ifndef TARN_ARCHIVE_MAILDATE_H
#define TARN_ARCHIVE_MAILDATE_H

#include <optional>
#include <string_view>

#include "archive/model/Moment.h"

namespace tarn::archive::mail {

// The offset is known where the date has one. A date without a zone, with "-0000" or with a zone
// whose name is unknown is taken for UTC, and its offset is unknown.
std::optional<Moment> MomentOfDate(std::string_view date);

// Of the line that begins a mail of an mbox: "From ann@example.com Mon Jan  1 10:34:56 2024".
std::optional<Moment> MomentOfMboxLine(std::string_view line);

// Whether such a line has a day of the week and, after it, a month, a time and a year.
bool HasMboxDate(std::string_view line);

// Of a field "Received: from ... by ...; Mon, 1 Jan 2024 10:34:56 +0100".
std::optional<Moment> MomentOfReceived(std::string_view field);

}  // namespace tarn::archive::mail

#endif
