// UnpackRtf.h - compressed RTF (MS-OXRTFCP) to RTF.
#ifndef TARN_ARCHIVE_UNPACKRTF_H
#define TARN_ARCHIVE_UNPACKRTF_H

#include <optional>
#include <string>
#include <string_view>

#include "archive/model/Trouble.h"

namespace tarn::archive {

// The text, without NULs at its end. Damaged for what is neither packed nor stored as the format
// asks, wherever the damage is: a text is whole or not there. Bytes after those that the header
// counts are none of it. No more is allocated than the bytes can unpack to.
//
// A packed text that is whole but does not match its checksum is given, because some writers have
// the checksum wrong and a reader is better served by a text in doubt than by none; `doubt`, where
// it is asked for, then says so, and is empty otherwise. Stored text has no checksum.
Outcome<std::string> UnpackRtf(std::string_view packed, std::optional<Trouble>* doubt = nullptr);

}  // namespace tarn::archive

#endif
