// DetectFormat.h - the sniff: which reader a file is for, by its first 12 bytes alone.
//
//   offset  size  bytes
//   0       4     "!BDN"                        FormatPst
//   0       8     D0 CF 11 E0 A1 B1 1A E1       FormatMsg: any compound file at all
//   8       4     must exist, play no part
//
// Anything else is FormatEml; whether it is a mail is the reader's question.
#ifndef TARN_FILEFORMATS_PST_DETECTFORMAT_H
#define TARN_FILEFORMATS_PST_DETECTFORMAT_H

#include "Internal/Status.h"

namespace tarn {

// Reads from the start of the file and leaves the position after the 12 bytes. StatusOk with a
// format, or StatusReadFailed for a shorter file.
Status DetectFormat(uint64_t handle, TarnFormat& format);

}  // namespace tarn

#endif
