// MailDates.h - dates of mails as ISO 8601 with seconds and the offset: 2026-11-21T10:00:00+01:00.
#ifndef TARN_TARNMAIL_PAGES_MAILDATES_H
#define TARN_TARNMAIL_PAGES_MAILDATES_H

#include <cstdint>
#include <string>
#include <string_view>

namespace tarn::host {

// Of a Date field (RFC 5322, section 3.3 and its obsolete forms in 4.3), as it was written, in its
// own zone. A zone that is missing or unknown counts as UTC. Empty for any other text and for a day
// or a time that there is not.
std::string IsoFromMailDate(std::string_view text);

// Of a FILETIME (100 ns since 1601), in UTC; empty outside the years 1 to 9999.
std::string IsoFromFileTime(int64_t fileTime);

}  // namespace tarn::host

#endif
