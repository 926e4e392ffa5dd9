// MailDate.h - a date in the usual mail form (RFC 822, section 5), such as a Content-Disposition
// carries: "Sat, 21 Nov 2026 11:54:00 +0100".
#ifndef TARN_FILEFORMATS_PST_MAILDATE_H
#define TARN_FILEFORMATS_PST_MAILDATE_H

#include <cstdint>

namespace tarn {

// Seconds since 1970, or 0 for null and for anything that cannot be read: a date without its
// weekday, an unknown month, a number beyond 32 bits. The zone must be there and is not applied:
// the fields are taken as local time.
int64_t ParseMailDate(const char16_t* text);

// The decimal number that the text begins with, 0 for none; wraps in 64 bits.
uint64_t ParseDecimal(const char16_t* text);

}  // namespace tarn

#endif
