// HtmlPasses.h - two passes over a text that RtfToHtml has made, in place and in linear time. Both
// take any bytes, shorten the text, and keep the block.
#ifndef TARN_RTF_HTMLPASSES_H
#define TARN_RTF_HTMLPASSES_H

#include "Internal/Tarnclasses_.h"

namespace tarn {

// Brings conditional comments ("<![if ...]>") down to the one form "<![if !V]>". A comment too
// short for the form is written over as well, up to the text's end: a terminator there may be lost.
void ShortenConditionalComments(SizedBytes& body);

// Cuts overlong values (`&nbsp;value="..."`) in text blocks to 97 bytes.
void CutLongValues(SizedBytes& body);

}  // namespace tarn

#endif
