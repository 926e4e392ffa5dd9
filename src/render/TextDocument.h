// TextDocument.h - the header block as lines of text in front of a plain body.
#ifndef TARN_RENDER_TEXT_DOCUMENT_H
#define TARN_RENDER_TEXT_DOCUMENT_H

#include "Internal/MailMessage.h"

namespace tarn {

// Puts the rows in front of message.text, which afterwards ends with a NUL that its length counts.
// A null text gets none. An empty line follows the block when it ends with Importance or, with an
// importance of length 0, with Subject; else the body follows the last row directly. Rows are UTF-8
// whatever the text is. 1; -814 for a length without a pointer; the code of a buffer that cannot
// grow. On failure the rows that were in place, those further down, stay.
int32_t RenderMailText(MailMessage& message);

}  // namespace tarn

#endif
