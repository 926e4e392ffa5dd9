// Renderer.h - puts the header block into a message's body, or into the plain text of a
// MailMessage. What comes of it is the whole document.
#ifndef TARN_RENDER_RENDERER_H
#define TARN_RENDER_RENDERER_H

#include "Internal/EmlMessage.h"
#include "Internal/MailMessage.h"

namespace tarn {

// Renders DocumentHtml and DocumentRtf into message->body (HtmlDocument.h, RtfDocument.h) and
// DocumentText into message->text (TextDocument.h); DocumentNone renders nothing.
//   StatusOk
//   StatusFailed  null message
//   others        theirs
Status RenderMailMessage(MailMessage* message, TarnDocumentKind kind);

// Renders message.documentKind into message.body. DocumentNone, and a message without From, To,
// Date and Cc, whatever Bcc holds, keep the body.
//
// In HTML the block comes after the opening of the body element or else at the start, and a text
// whose first tag is not <html> in any case is put between "<html>" and "</html>". In RTF it comes
// before the first "\pard", and a text without one stays as it is. In text it comes at the start
// or, after a mark, three bytes in.
//
//   StatusOk            also when the body is kept
//   StatusNotSupported  HTML: "<body" without a ">"
//   StatusTimeFailed    RTF: a body of length 0
//   StatusOutOfMemory   no memory for the header block or the body
//   a code of the host  its budget refused the header block
// After a failure the body is as it was, but for an <html> element that it got before memory ran
// out.
Status RenderEmlMessage(EmlMessage& message);

// Gives a finished HTML document that has a "<head>" and nowhere the word "charset", both in lower
// case, a declaration of UTF-8, whatever its bytes are. The length rises by 66, for the declaration
// and a NUL after the text; the block of a new document has one byte more than that, a NUL too. The
// host is not told of it.
//   StatusOk           also for a document without a block
//   StatusOutOfMemory  the document is unchanged or, when it was the second block that failed, lost
Status EnsureHtmlCharsetMeta(TrackedBuffer<char>& document);

}  // namespace tarn

#endif
