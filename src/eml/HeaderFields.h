// HeaderFields.h - the seven header fields that the header block shows.
//
// No address and no date is parsed and no comment removed: a value reaches the header block as the
// file has it, unless an encoded word changes it.
#ifndef TARN_EML_HEADERFIELDS_H
#define TARN_EML_HEADERFIELDS_H

#include "Internal/EmlMessage.h"

namespace tarn {

// Fills from, to, subject, date, cc, bcc and importance, in this order, with the first header line
// of each name before `limit`, unfolded and with its encoded words decoded. A field that is present
// but empty has length 1: its terminator. Unfolding drops the line end and exactly one white-space
// byte; after a lone LF that byte must be a blank, after CR LF it may be a tab.
//   StatusOk             also when words cannot be decoded: the field then keeps its value
//   StatusOutOfMemory    for a field
Status ParseEmlHeaders(EmlMessage& message, size_t limit);

}  // namespace tarn

#endif
