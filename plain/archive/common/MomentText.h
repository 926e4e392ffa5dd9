// MomentText.h - points in time on the command line and on the screen, by the machine's clock.
#ifndef TARN_ARCHIVE_MOMENTTEXT_H
#define TARN_ARCHIVE_MOMENTTEXT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "archive/model/Moment.h"

namespace tarn::archive {

// What a text on the command line names: a moment with its length.
struct Span {
  int64_t first = 0;  // seconds since 1970-01-01T00:00:00Z
  int64_t last = 0;   // the last second that belongs to it
};

// "2024", "2024-05", "2024-05-01", "2024-05-01T12:34" or "2024-05-01T12:34:56", with a blank for
// the T if need be; after a time perhaps "Z" or an offset, "+02:00" or "+0200". Local time without
// one. None for any other text and for days that no calendar has.
std::optional<Span> ParseSpan(std::string_view text);

// "2024-05-01 12:34", local time.
std::string LocalMinute(const Moment& moment);

// "Wed, 1 May 2024 12:34:56 +0200": by the sender's clock where its offset is known, else local
// time.
std::string LongDate(const Moment& moment);

}  // namespace tarn::archive

#endif
