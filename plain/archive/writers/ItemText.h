// ItemText.h - the fields of an item as people read them.
#ifndef TARN_ARCHIVE_ITEMTEXT_H
#define TARN_ARCHIVE_ITEMTEXT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/model/Item.h"

namespace tarn::archive {

enum class UnknownZone : uint8_t {
  Utc,   // "UTC", for people
  Minus  // written "-0000", as mails write it (RFC 5322 3.3)
};

// "Wed, 1 May 2024 12:34:56 +0200", by the sender's clock where its offset is known, else in UTC.
std::string DateText(const Moment& moment, UnknownZone unknown);

// "Wed May  1 10:34:56 2024", in UTC, as the lines have it that begin the mails of an mbox.
std::string MboxDateText(const Moment& moment);

// "Ann Smith <ann@example.com>", or what of it there is. A path in the directory of an organisation
// ("/O=CORP/CN=ANN") tells a reader nothing that the name does not: it is left out.
std::string AddressText(const Address& address);

// The same of several, after each other with commas.
std::string AddressesText(const std::vector<Address>& addresses);

// "12 bytes", "3.4 KB", "5.6 MB"
std::string SizeText(uint64_t bytes);

// A name of an attachment to show, where it may have none.
std::string AttachmentTitle(const Attachment& attachment, size_t index);

// On one line: control characters, and what breaks lines, are spaces. What is no UTF-8 is U+FFFD.
std::string OneLine(std::string_view text);

// Many lines: LF ends them, whatever did; other control characters than tabs are dropped, as are
// NULs and byte order marks. What is no UTF-8 is U+FFFD.
std::string ManyLines(std::string_view text);

// What could not be read of the item altogether.
void AppendTroubles(const std::vector<Trouble>& from, std::vector<Trouble>& to);

}  // namespace tarn::archive

#endif
