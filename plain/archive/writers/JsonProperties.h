// JsonProperties.h - the properties of a message as JSON.
#ifndef TARN_ARCHIVE_JSONPROPERTIES_H
#define TARN_ARCHIVE_JSONPROPERTIES_H

#include <vector>

#include "archive/common/JsonWriter.h"
#include "archive/mapi/MapiMessage.h"
#include "archive/model/Trouble.h"
#include "archive/writers/SinkBuffer.h"

namespace tarn::archive {

// An array with an object for each property of the message itself, in the order of the source:
//   tag     "0x0037001F": id and type
//   name    "PidTagSubject" where it is one that has a name here, or the name of a named property
//   set     the set of a named property, as a GUID
//   number  of a named property without a name
//   value   text, number, true or false, an array of such; times in ISO 8601, bytes in base64
//   size    instead of a value: the bytes of one that is too large to be here, or an object
void PutJsonProperties(mapi::MapiMessage& message, JsonWriter& json, SinkBuffer& out,
                       std::vector<Trouble>& lost);

}  // namespace tarn::archive

#endif
