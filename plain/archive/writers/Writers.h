// Writers.h - an item as a file of one form.
//
// Each writes the whole file into the sink, the same bytes for the same item. What of the item
// cannot be read is left out and told in `lost`, and the file is complete without it. A sink that
// takes no more ends the writing: `full` says so, and the file is none.
#ifndef TARN_ARCHIVE_WRITERS_H
#define TARN_ARCHIVE_WRITERS_H

#include <optional>
#include <string>
#include <vector>

#include "archive/model/ByteSink.h"
#include "archive/model/Item.h"
#include "archive/model/Trouble.h"

namespace tarn::archive {

struct Written {
  std::vector<Trouble> lost;
  std::optional<Trouble> full;
};

// Where the attachments of an item are beside its file: relative paths with "/", in the order of
// Item::attachments(); empty for one that has no file. Empty altogether: there are no files beside.
using AttachmentPaths = std::vector<std::string>;

// One self-contained UTF-8 file: a Content-Security-Policy that forbids scripts and everything
// remote first in its head, a table of the header fields, the body with its images inside, links to
// the attachments.
Written WriteHtml(Item& item, const AttachmentPaths& attachments, ByteSink& sink);

// UTF-8 without marks and NULs: header fields, a blank line, the best text, the list of
// attachments.
Written WriteText(Item& item, ByteSink& sink);

// An internet mail (RFC 5322, MIME), CRLF. Of internet mail the very bytes of the source; of all
// else what a mail program would have sent: alternative and related parts, embedded items as
// message/rfc822, with the original headers where the source has them.
Written WriteEml(Item& item, ByteSink& sink);

// The same as one mail of an mbox (RFC 4155, the dialect that quotes ">From " lines too): a "From "
// line, the mail with LF at the ends of lines, a blank line.
Written WriteMbox(Item& item, ByteSink& sink);

// The whole model as one JSON object, and a line end.
Written WriteJson(Item& item, ByteSink& sink);

// Forms that only some classes have.
bool IsContact(const std::string& messageClass);     // IPM.Contact and what is below it
bool IsCalendar(const std::string& messageClass);    // appointments, meetings and tasks
Written WriteVcard(Item& item, ByteSink& sink);      // vCard 4 (RFC 6350)
Written WriteIcalendar(Item& item, ByteSink& sink);  // RFC 5545, with recurrence and time zones

}  // namespace tarn::archive

#endif
