// MapiFields.h - the fields of an item out of the properties of a message.
#ifndef TARN_ARCHIVE_MAPIFIELDS_H
#define TARN_ARCHIVE_MAPIFIELDS_H

#include <optional>
#include <string>
#include <vector>

#include "archive/mapi/MapiMessage.h"
#include "archive/model/Item.h"

namespace tarn::archive::mapi {

// What Detail::Headline names. Fields that the message does not tell stay as they are.
//
// The subject of an item that has none is its name: of a contact the full name, or what it is filed
// under. The dates are those of sending and delivery alone: an item that was never sent, as a
// contact or a draft, has none, whenever it was made.
void ReadHeadline(MapiMessage& message, std::optional<uint32_t> codePage, ItemFields& fields,
                  std::vector<Trouble>& troubles);

// The other fields, after ReadHeadline.
void ReadEnvelope(MapiMessage& message, std::optional<uint32_t> codePage, ItemFields& fields,
                  std::vector<Trouble>& troubles);

// PidTagSubject without the mark that tells how long its prefix is (MS-OXCMSG 2.2.1.46).
std::string SubjectWithoutMark(std::string subject);

}  // namespace tarn::archive::mapi

#endif
