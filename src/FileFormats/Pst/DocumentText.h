// DocumentText.h - makes the documents of stores and MSG files out of their messages.
#ifndef TARN_FILEFORMATS_PST_DOCUMENTTEXT_H
#define TARN_FILEFORMATS_PST_DOCUMENTTEXT_H

#include <string_view>

#include "Internal/MailMessage.h"

namespace tarn {

// What the documents of a format have around the text of a message.
struct DocumentRules {
  bool framesAllHtml;     // also what opens with <html> is put between "<html>" and "</html>"
  std::string_view mark;  // before a plain text
  std::string_view end;   // after any text
};

// Renders message.body, and makes a document of the given kind of it. The length does not count the
// end. The block of the body becomes the document's: a large one is not there twice.
//   StatusOk
//   StatusNotSupported  the message has no body
//   StatusOutOfMemory   rendering failed for any reason, or memory or budget is short. The body
//                       may be gone
Status MakeBodyDocument(MailMessage& message, TarnDocumentKind kind, const DocumentRules& rules,
                        TrackedBuffer<char>& document);

// The same with message.text, also where that says "body". The length counts the end, but not the
// mark, so that the last bytes fall outside: hosts have always got these documents so. Where
// rendering leaves no text, the document is empty, and that is StatusOk.
Status MakeTextDocument(MailMessage& message, const DocumentRules& rules,
                        TrackedBuffer<char>& document);

}  // namespace tarn

#endif
