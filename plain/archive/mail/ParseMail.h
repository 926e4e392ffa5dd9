// ParseMail.h - one mail as GMime parses it. The contents of its parts stay where they are.
#ifndef TARN_ARCHIVE_PARSEMAIL_H
#define TARN_ARCHIVE_PARSEMAIL_H

#include <gmime/gmime.h>

#include <string>
#include <string_view>
#include <vector>

#include "archive/mail/GObjectPtr.h"
#include "archive/mail/MailBytes.h"
#include "archive/model/Trouble.h"

namespace tarn::archive::mail {

// How everything of mails is read: as most of them are meant. Made once.
GMimeParserOptions* ReadingOptions();

// What may be there before the first header of a mail.
struct MailStart {
  uint64_t offset = 0;   // of the first header, or of the text where there are none
  uint64_t broken = 0;   // of the one line before it that is no header; else the offset
  std::string mboxLine;  // "From ann@example.com Mon Jan  1 10:34:56 2024", if any
};

// Passes over a byte order mark (UTF-8), empty lines and lines as an mbox begins its mails with,
// where headers follow; over one line that is no header only where a usual one follows.
Outcome<MailStart> FindMailStart(MailBytes& bytes);

// Whether a line is "Name: value", whatever the name.
bool IsHeaderLine(std::string_view line);

struct ParsedMail {
  GObjectPtr<GMimeMessage> message;  // never null; of bytes without headers a text
  bool sawUuencode = false;
  std::vector<Trouble> troubles;  // why not all of it could be parsed
};

// From the first header on.
ParsedMail ParseMail(const SharedBytes& bytes);

struct HeaderSection {
  uint64_t end = 0;   // after the last header
  uint64_t body = 0;  // after the empty line that follows
};

// Of the headers that begin at `start`.
Outcome<HeaderSection> FindHeaders(MailBytes& bytes, uint64_t start);

}  // namespace tarn::archive::mail

#endif
