// TransportHeaders.h - what the header section that a mail came with tells beside its properties.
#ifndef TARN_ARCHIVE_TRANSPORTHEADERS_H
#define TARN_ARCHIVE_TRANSPORTHEADERS_H

#include <optional>
#include <string>
#include <string_view>

#include "archive/model/Moment.h"

namespace tarn::archive::mapi {

// The first field of a name (any case), unfolded, without spaces around it; empty without one.
std::string HeaderField(std::string_view headers, std::string_view name);

// The moment of a Date field (RFC 5322 3.3, with its obsolete zones), with the sender's offset.
// A zone "-0000", or one whose name is unknown, tells none.
std::optional<Moment> ParseMailDate(std::string_view date);

// The address of a From field: what its last pair of angle brackets holds, or all of a field that
// is an address; empty where there is none.
std::string AddressOfField(std::string_view field);

}  // namespace tarn::archive::mapi

#endif
