// MailReaders.h - internet mail (RFC 5322, MIME) as items: a file with one mail, an mbox, a
// Maildir.
//
// A message that travels inside of a mail (winmail.dat, MS-OXTNEF) is the mail's: its attachments
// are in the mail's list in the place of the file, its text is the mail's where that has none of
// its kind, and so are its class and its properties. Where it cannot be read, the file is an
// attachment.
//
// They read whatever can be made of a file, and open what is no mail at all too: telling files
// apart is for others.
#ifndef TARN_ARCHIVE_MAILREADERS_H
#define TARN_ARCHIVE_MAILREADERS_H

#include <filesystem>
#include <memory>

#include "archive/model/ItemReader.h"

namespace tarn::archive {

// One item, "1", in no folder.
Outcome<std::unique_ptr<ItemReader>> OpenMail(const std::filesystem::path& path);

// The mails of an mbox (RFC 4155 and the elder mbox(5)), in no folder; an id is the offset of a
// mail's "From " line. A mail ends before such a line, or where its Content-Length tells it when a
// "From " line or the end of the file is there (mboxcl, mboxcl2).
//
// Programs write ">From " where a text has "From " at the start of a line. One ">" is taken away
// again from each line of ">"s and "From ", as mboxrd defines it. Of mboxo this is right but for
// lines that had a ">" of their own, which that dialect does not tell apart. Nothing is taken from
// a mail of a known length that has a bare "From " line, since its program quotes nothing
// (mboxcl2).
Outcome<std::unique_ptr<ItemReader>> OpenMbox(const std::filesystem::path& path);

// The mails of a folder with folders "cur" and "new", and of those of its folders that Maildir++
// names with dots: ".Sent.2024" is the folder "2024" in "Sent". An id is the file's name without
// its flags; in a folder below, the folder's name and a colon come first. Other folders with
// something in them in "cur" and "new" are troubles. Keeps the names of one folder.
Outcome<std::unique_ptr<ItemReader>> OpenMaildir(const std::filesystem::path& path);

}  // namespace tarn::archive

#endif
