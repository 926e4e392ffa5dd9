// HeaderLabels.h - the labels of the header block in the host's language, and the two texts made
// while a message is read: the time it was sent and its importance.
#ifndef TARN_RENDER_HEADERLABELS_H
#define TARN_RENDER_HEADERLABELS_H

#include "Internal/Tarnclasses_.h"

namespace tarn {

// The texts of a label set; the numbers are not the order of output.
enum HeaderRow : int32_t {
  HeaderRowFrom = 0,
  HeaderRowTo = 1,
  HeaderRowBcc = 2,
  HeaderRowCc = 3,
  HeaderRowSent = 4,
  HeaderRowSubject = 5,
  HeaderRowImportance = 6,
  HeaderRowHighWord = 7,
  HeaderRowLowWord = 8
};

// The constant UTF-8 text of a row, padding included, in the host's current language, or in English
// where that has no labels; "Unknown" for a number outside 0 to 8. Never null.
const char* GetHeaderLabel(int32_t row);

// Appends the word for an importance of 2 (high) or 0 (low); nothing for any other. StatusOk or
// StatusOutOfMemory.
Status ImportanceText(int32_t importance, SizedBytes& text);

// Appends a FILETIME (100 ns since 1601, signed) as local time, "%a %b %d, %Y %I:%M %p".
//   StatusOk
//   StatusTimeFailed   the time cannot be formatted
//   StatusOutOfMemory
Status FormatFileTime(int64_t fileTime, SizedBytes& text);

}  // namespace tarn

#endif
