// MailBodies.h - the text of a mail out of its parts.
#ifndef TARN_ARCHIVE_MAILBODIES_H
#define TARN_ARCHIVE_MAILBODIES_H

#include <cstddef>
#include <string>
#include <unordered_set>

#include "archive/mail/MailLayout.h"
#include "archive/model/Item.h"

namespace tarn::archive::mail {

// A text beyond this is not read: TooLarge.
inline constexpr size_t kLargestText = size_t{64} << 20;

// Text has LF at the ends of its lines. Several pieces of the same kind are joined. Where a mail
// has HTML, that has all pieces: those of text alone come as preformatted text at their place.
// There is text only where it has all pieces: one with HTML alone, or with empty text beside it,
// leaves a mail without.
Bodies BodiesOf(const MailLayout& layout, bool seeksUuencode);

// The bytes of a text as its part has them, after transfer decoding.
Outcome<std::string> BytesOfText(GMimePart* part);

// What HTML names: content ids ("cid:..."), as they are in the parts.
std::unordered_set<std::string> ContentIdsOf(const HtmlBody& html);

}  // namespace tarn::archive::mail

#endif
