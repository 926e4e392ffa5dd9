// Renderer.h - puts the header block into a message's body. The result stands in the body (or, for
// the plain text of a MailMessage, in text) and is the whole document.
#ifndef TARN_RENDER_RENDERER_H
#define TARN_RENDER_RENDERER_H

#include "Internal/EmlMessage.h"
#include "Internal/MailMessage.h"

namespace tarn {

// Renders DocumentHtml and DocumentRtf into message->body (HtmlDocument.h, RtfDocument.h) and
// DocumentText into message->text (TextDocument.h). 1, or their failure code; 0 for a null message.
// Any other kind gives 1 and does nothing.
int32_t RenderMailMessage(MailMessage* message, uint32_t kind);

// Renders message.documentKind into message.body. DocumentNone, and a message without From, To,
// Date and Cc, give 1 and keep the body, whatever Bcc holds.
//
// In HTML the block stands behind the opening of the body element or else at the start, and a text
// whose first tag is not <html> in any case is put between "<html>" and "</html>". In RTF it stands
// in front of the first "\pard", and a text without one stays as it is. In text it stands at the
// start or, behind a mark, three bytes in.
//
// 1; -9 for another kind, and for "<body" without a ">"; -74 for RTF of length 0; -814 for a length
// without a pointer; the code of a block that cannot grow; -1 when the body cannot. On failure the
// body is unchanged, but for an <html> element that it got before memory ran out.
int32_t RenderEmlMessage(EmlMessage& message);

// Gives a finished HTML document that has a "<head>" and nowhere the word "charset", both in lower
// case, a declaration of UTF-8, whatever its bytes are. The length rises by 66, for the declaration
// and a NUL after the text; the block of a new document has one byte more than that, a NUL too. The
// host is not told of it.
//   StatusOk           also for a document without a block
//   StatusOutOfMemory  the document is unchanged or, when it was the second block that failed, lost
int32_t EnsureHtmlCharsetMeta(TrackedBuffer<char>& document);

}  // namespace tarn

#endif
