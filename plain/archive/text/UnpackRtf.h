// UnpackRtf.h - compressed RTF (MS-OXRTFCP) to RTF.
#ifndef TARN_ARCHIVE_UNPACKRTF_H
#define TARN_ARCHIVE_UNPACKRTF_H

#include <string>
#include <string_view>

#include "archive/model/Trouble.h"

namespace tarn::archive {

// Damaged for what is neither packed nor stored as the format asks, wherever the damage is.
Outcome<std::string> UnpackRtf(std::string_view packed);

}  // namespace tarn::archive

#endif
