// EmlDocument.h - one row of a mail file's header block.
#ifndef TARN_RENDER_EML_DOCUMENT_H
#define TARN_RENDER_EML_DOCUMENT_H

#include "render/BlockWriter.h"
#include "render/HeaderLabels.h"

namespace tarn {

// Writes a row behind what the block holds: opener with label, field, row tail. A field without
// text writes nothing, whatever the kind. In HTML a field ends at its first NUL, and "<" and ">" in
// it are escaped ("&" is not); in RTF and text it is copied as it stands. 1; -74 for DocumentNone;
// -9 for another kind and for what is no row; -814 for a length without a pointer; the code of a
// block that cannot grow.
int32_t AppendEmlHeaderRow(BlockWriter& block, const SizedBytes& field, uint32_t kind,
                           HeaderRow row);

}  // namespace tarn

#endif
