// PartCharset.h - the charset of a part, and whether the part is to become UTF-8.
#ifndef TARN_EML_PARTCHARSET_H
#define TARN_EML_PARTCHARSET_H

#include "Internal/EmlMessage.h"
#include "eml/HeaderSearch.h"

namespace tarn {

// Sets the part's charset by the "charset=" of its Content-Type, whose value the stretch begins
// with, on that line and its folded lines; CharsetNone when there is none.
void ParsePartCharset(EmlPart& part, const HeaderStretch& value);

// Would ConvertPartCharset look into the part's text for its decision?
bool LooksAtTextForCharset(const EmlPart& part, const EmlMessage& message);

// Decides whether the message's texts become UTF-8, if that is still open, and converts the part's
// decoded text accordingly. A part of a charset that needs conversion decides for it, unless it is
// an HTML text whose own meta element names the same charset; that element counts in one spelling
// only, without quotes around Content-Type. The decision also repairs the header fields that are no
// UTF-8. StatusOk, or the failure of the conversion; then `decoded` may be absent.
Status ConvertPartCharset(EmlPart& part, EmlMessage& message);

}  // namespace tarn

#endif
