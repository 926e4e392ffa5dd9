// TextDocument.h - the header block as lines of text before a plain body.
#ifndef TARN_RENDER_TEXT_DOCUMENT_H
#define TARN_RENDER_TEXT_DOCUMENT_H

#include "Internal/MailMessage.h"

namespace tarn {

// Puts the rows before message.text, which afterwards ends with a NUL that its length counts. An
// absent text gets none. An empty line follows the block when it ends with Importance or, with an
// importance of length 0, with Subject; else the body follows the last row directly. Rows are UTF-8
// whatever the text is. StatusOk, or the status of a buffer that cannot grow: then the rows that
// were in place, those further down, stay.
Status RenderMailText(MailMessage& message);

}  // namespace tarn

#endif
