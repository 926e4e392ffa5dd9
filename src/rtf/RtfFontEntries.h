// RtfFontEntries.h - how a font table grows; for those who read or extend it.
#ifndef TARN_RTF_RTFFONTENTRIES_H
#define TARN_RTF_RTFFONTENTRIES_H

#include <cstdint>
#include <string_view>

#include "Internal/Tarnclasses_.h"
#include "rtf/RtfFontTable.h"

namespace tarn {

// A face name in a block of its own, with a NUL behind it; an empty owner without memory.
KernelBlock<char> CopyRtfFontName(std::string_view name);

// Makes room for one entry more behind the last. False without memory, and then, as before the
// entry is counted, the table is as it was.
bool ReserveRtfFontEntry(RtfFontTable& table);

}  // namespace tarn

#endif
