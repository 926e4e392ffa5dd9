// MailProperties.h - what a PDF says of its mail: subject, sender and date, as the fields of the
// mail have them and whatever the language of the header block.
#ifndef TARN_TARNMAIL_PAGES_MAILPROPERTIES_H
#define TARN_TARNMAIL_PAGES_MAILPROPERTIES_H

#include <cstdint>

#include "siblings/Pages.h"
#include "tarnmail/MailFormat.h"

namespace tarn::host {

// The title is the subject and the author whom the header block names as sender, each in one line
// of UTF-8; the date has the zone that the mail has, and that of stores and MSG files UTC. What the
// message does not have, or what cannot be read, is empty. The file is read again, by the filter's
// own searches and file layers. Throws std::bad_alloc alone.
pages::PdfProperties PropertiesOfMail(const char16_t* path, MailFormat format,
                                      int32_t messageNumber);

}  // namespace tarn::host

#endif
