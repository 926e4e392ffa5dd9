// HeaderFields.h - what the headers of mails and of their parts say, decoded.
#ifndef TARN_ARCHIVE_HEADERFIELDS_H
#define TARN_ARCHIVE_HEADERFIELDS_H

#include <gmime/gmime.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/model/Item.h"

namespace tarn::archive::mail {

// UTF-8 of what GMime gives: empty for null. Line breaks are gone, and bytes in no charset that is
// told are UTF-8 where valid, else Windows-1252.
std::string TextOf(const char* text);

// The text of a value, unfolded and with its encoded words decoded (RFC 2047).
std::string DecodedText(const std::string& raw);

// The value of the first header of a name, as it came (unfolded by nobody); null without one.
const char* RawHeader(GMimeObject* object, const char* name);

// The same as a text.
std::string DecodedHeader(GMimeObject* object, const char* name);

// The headers of a mail: everything but class, size and attachments. Of several authors the first
// is whom the mail is from; the others are the sender, with the one of "Sender" before them.
void ReadHeadline(GMimeMessage* message, ItemFields& fields);
void ReadEnvelope(GMimeMessage* message, ItemFields& fields);

// Lower case. Text where the part says nothing that can be read (RFC 2045 5.2).
std::string MediaTypeOf(GMimeObject* part);

// A parameter of the Content-Type; empty without it.
std::string ParameterOf(GMimeObject* part, const char* name);

// What a part is named, by its Content-Disposition, else by its Content-Type.
std::string FileNameOf(GMimeObject* part);

}  // namespace tarn::archive::mail

#endif
