// LongConversion.h - a long text of a code page made UTF-8 in its own block, piece by piece.
//
// Converted as a whole, a text needs eight times its length beside it. A body that images have
// grown is nearly all letters and digits of base64, so most of that would be for nothing. A text is
// cut where no character can span the cut: after four bytes of ASCII. No lead byte is among them,
// and a character of GB18030 has no two such bytes in a row.
#ifndef TARN_EML_LONGCONVERSION_H
#define TARN_EML_LONGCONVERSION_H

#include "Internal/Tarnclasses_.h"

namespace tarn {

// Longer texts are worth the pieces.
inline constexpr uint64_t kLongText = uint64_t{1} << 20;

// Whether what bytes mean in the code page never depends on what is far before them. It does in
// UTF-7, ISO-2022, HZ and ISCII.
bool MayConvertInPieces(uint32_t codePage);

// What a conversion did: a status, and whether any byte was converted.
struct Conversion {
  Status status;
  bool converted;
};

// Converts the text from `offset` on, a trailing NUL apart, and terminates it; the length does not
// count the NUL.
//   StatusOk                 also for text that the code page does not take, which stays
//   StatusOutOfMemory        nothing has changed
//   StatusPathToUtf8Failed   the UTF-8 form cannot be made; the text is cut at the offset
Conversion ConvertInPieces(SizedBytes& text, uint64_t offset, uint32_t codePage);

}  // namespace tarn

#endif
