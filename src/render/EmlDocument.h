// EmlDocument.h - one row of a mail file's header block.
#ifndef TARN_RENDER_EML_DOCUMENT_H
#define TARN_RENDER_EML_DOCUMENT_H

#include "Common/TextWriter.h"
#include "render/HeaderLabels.h"

namespace tarn {

// Writes a row after what the block holds: opener with label, field, row tail. A field without
// text writes nothing, whatever the kind. In HTML a field ends at its first NUL, and "<" and ">" in
// it are escaped ("&" is not); in RTF and text it is copied as it is.
//   StatusOk
//   StatusTimeFailed    DocumentNone
//   StatusNotSupported  no row of the header block
//   others              of a block that cannot grow
Status AppendEmlHeaderRow(TextWriter& block, const SizedBytes& field, TarnDocumentKind kind,
                          HeaderRow row);

}  // namespace tarn

#endif
