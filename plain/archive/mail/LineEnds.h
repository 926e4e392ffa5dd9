// LineEnds.h - files whose lines end with CR alone, as lines that end with LF.
#ifndef TARN_ARCHIVE_LINEENDS_H
#define TARN_ARCHIVE_LINEENDS_H

#include "archive/mail/MailBytes.h"

namespace tarn::archive::mail {

// Bytes with LF for each CR where the first header ends its lines with CR, and has no LF; as they
// are otherwise. Places stay what they are.
Outcome<SharedBytes> WithLineFeeds(SharedBytes bytes);

}  // namespace tarn::archive::mail

#endif
