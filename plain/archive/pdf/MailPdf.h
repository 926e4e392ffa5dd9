// MailPdf.h - the pages of a mail as a file to keep: it says what the mail says of itself, and has
// the mail and its attachments inside.
//
// Whoever opens the file in a reader sees the pages and a list of the files; whoever wants the mail
// back takes it out. They are associated files of the document (ISO 32000-2, 14.13): the mail its
// Source, each attachment a Supplement.
#ifndef TARN_ARCHIVE_MAILPDF_H
#define TARN_ARCHIVE_MAILPDF_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "archive/model/Trouble.h"
#include "archive/pdf/MailMetadata.h"

namespace tarn::archive {

enum class FileRelation : uint8_t { Mail, Attachment };

struct FileInside {
  std::string name;       // as a reader shows it and saves it
  std::string mediaType;  // "image/png"; one that is none becomes application/octet-stream
  FileRelation relation = FileRelation::Attachment;
  std::string bytes;
};

struct MadePdf {
  std::string bytes;
  size_t pages = 0;
};

// `pages` is a PDF. The same facts, files and pages give the same bytes.
Outcome<MadePdf> MailPdf(const std::string& pages, const MailFacts& facts,
                         std::vector<FileInside> files);

}  // namespace tarn::archive

#endif
