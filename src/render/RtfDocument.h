// RtfDocument.h - the header block in RTF, before the first paragraph of the body.
#ifndef TARN_RENDER_RTF_DOCUMENT_H
#define TARN_RENDER_RTF_DOCUMENT_H

#include "Internal/MailMessage.h"
#include "render/HeaderLabels.h"
#include "rtf/RtfTextWriter.h"

namespace tarn {

// Writes a row after what the render holds: label and field, both escaped and in fonts of the
// render's table, which may grow. The sender is followed by " <address>" when there is one, even an
// empty one; another author is never written. A field without text writes nothing. On failure a
// part of the row may have been written.
//   StatusOk
//   StatusNullArgument  null message or field
//   others              of the text writer, or of an output that cannot grow
Status AppendRtfHeaderRow(RtfRender& render, const MailMessage* message, const SizedBytes* field,
                          HeaderRow row);

// Puts the block into message.body (RtfSplice.h), which afterwards ends with a NUL that its length
// counts. The body's font table is read from its text, and is replaced when labels or values need
// fonts that it lacks. A message without any row keeps its body, and so does one whose body has no
// "\pard". On failure the body is as it was.
//   StatusOk                also when the body is kept
//   StatusNotSupported      a body without font table and "\from", an empty one included; a damaged
//                           table
//   StatusOutOfMemory       no memory for the rows or the body
//   StatusBadArgument       a label or a value that RTF cannot hold
//   StatusPathToUtf8Failed  a conversion failed
//   StatusPathTooLong       a value too long to convert
//   a code of the host      a refused budget
Status RenderMailRtf(MailMessage& message);

}  // namespace tarn

#endif
