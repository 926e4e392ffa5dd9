// MapiBodies.h - the bodies of a message (MS-OXBBODY), and the headers that it came with.
#ifndef TARN_ARCHIVE_MAPIBODIES_H
#define TARN_ARCHIVE_MAPIBODIES_H

#include <cstdint>
#include <optional>
#include <string>

#include "archive/mapi/MapiMessage.h"
#include "archive/model/Item.h"

namespace tarn::archive::mapi {

// Whatever the message has, whichever is the best of them. Bodies without a byte are not there.
// HTML and text that RTF wraps are given where the message has none of its own.
Bodies ReadBodies(MapiMessage& message, std::optional<uint32_t> codePage);

// The bytes of 8-bit headers as they are, wide ones as UTF-8; empty without any.
Outcome<std::string> ReadTransportHeaders(MapiMessage& message);

}  // namespace tarn::archive::mapi

#endif
