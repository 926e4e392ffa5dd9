// MailMetadata.h - what a PDF says of the mail that it shows, as XMP (ISO 16684-1).
#ifndef TARN_ARCHIVE_MAILMETADATA_H
#define TARN_ARCHIVE_MAILMETADATA_H

#include <string>
#include <vector>

namespace tarn::archive {

// All text is UTF-8; times as 2024-05-01T12:34:56+02:00. Whatever is empty is left out.
struct MailFacts {
  std::string subject;
  std::string from;
  std::vector<std::string> to;  // as "Ann Archer <ann@example.com>"
  std::vector<std::string> cc;
  std::vector<std::string> bcc;
  std::string sent;
  std::string received;
  std::string messageId;  // without angle brackets
};

// The namespace of the properties that no published schema has: recipients, received, message id.
inline constexpr const char* kMailSchema = "urn:tarnmail:mail:1";

// A whole packet. Subject, sender and date are there by Dublin Core, where every program looks for
// them; sender, recipients and times under their own names too. The same facts give the same bytes.
std::string MailMetadata(const MailFacts& facts);

}  // namespace tarn::archive

#endif
