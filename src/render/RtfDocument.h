// RtfDocument.h - the header block in RTF, in front of the first paragraph of the body.
#ifndef TARN_RENDER_RTF_DOCUMENT_H
#define TARN_RENDER_RTF_DOCUMENT_H

#include "Internal/MailMessage.h"
#include "render/HeaderLabels.h"
#include "rtf/RtfTextWriter.h"

namespace tarn {

// Writes a row behind what the render holds: label and field, both escaped and in fonts of the
// render's table, which may grow. Behind the sender stands " <address>" when there is one, even an
// empty one; another author is never written. A field without text writes nothing. 1; -814 for a
// null message or field and for a length without a pointer; the failure of the text writer; the
// code of an output that cannot grow. On failure a part of the row may stand there.
int32_t AppendRtfHeaderRow(RtfRender& render, const MailMessage* message, const SizedBytes* field,
                           HeaderRow row);

// Puts the block into message.body (RtfSplice.h), which afterwards ends with a NUL that its length
// counts. The body's font table is read from its text, a NUL that the length counts left out, and
// is replaced when labels or values need fonts that it lacks. A message without any row keeps its
// body untouched, and so does one whose body has no "\pard".
//
// 1; -9 for a body without font table and "\from", an empty one included, and for a damaged table;
// -814 for a length without a pointer; else as above, and -1 when the new body finds no memory. On
// failure the body is unchanged.
int32_t RenderMailRtf(MailMessage& message);

}  // namespace tarn

#endif
