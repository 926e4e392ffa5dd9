// PartialMail.h - mails that are one piece of a longer one (message/partial, RFC 2046 5.2.2).
#ifndef TARN_ARCHIVE_PARTIALMAIL_H
#define TARN_ARCHIVE_PARTIALMAIL_H

#include <gmime/gmime.h>

#include "archive/model/Item.h"

namespace tarn::archive::mail {

// The text of a piece: a line that says which one it is, and of the first, which begins as the
// longer mail does, the text of that as far as it goes. Nothing of other mails. The piece itself is
// an attachment.
void AddPieceOfMail(GMimeMessage* message, Bodies& bodies);

}  // namespace tarn::archive::mail

#endif
