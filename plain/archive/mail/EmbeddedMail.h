// EmbeddedMail.h - where the mail that a part holds begins and ends in the mail around it.
#ifndef TARN_ARCHIVE_EMBEDDEDMAIL_H
#define TARN_ARCHIVE_EMBEDDEDMAIL_H

#include <cstdint>

#include "archive/mail/MailBytes.h"
#include "archive/mail/MailLayout.h"

namespace tarn::archive::mail {

struct ByteRange {
  uint64_t start = 0;
  uint64_t end = 0;
};

// Of a part of kind Item that is not encoded: the bytes from the end of the part's own headers to
// the line end before the delimiter of a multipart that it is in, or the end of the mail around it.
// GMime keeps no such range, and would write the mail anew; this gives the bytes as they came.
Outcome<ByteRange> RangeOfEmbedded(MailBytes& mail, const LaidPart& part);

}  // namespace tarn::archive::mail

#endif
