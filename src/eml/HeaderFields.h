// HeaderFields.h - the seven header fields that the header block shows.
//
// No address and no date is parsed and no comment removed: a value reaches the header block as the
// file has it, unless an encoded word changes it.
#ifndef TARN_EML_HEADERFIELDS_H
#define TARN_EML_HEADERFIELDS_H

#include "Internal/EmlMessage.h"

namespace tarn {

// Fills from, to, subject, date, cc, bcc and importance, in this order, with the first header line
// of each name in [message.data, limit), unfolded and with its encoded words decoded. A field that
// is present but empty has length 1: its terminator. Unfolding drops the line end and exactly one
// white-space byte; behind a lone LF that byte must be a blank, behind CR LF it may be a tab.
//
// 1, or -1 without memory for a field. Words that cannot be decoded are no failure: the field then
// keeps its undecoded value.
int32_t ParseEmlHeaders(EmlMessage& message, const char* limit);

}  // namespace tarn

#endif
