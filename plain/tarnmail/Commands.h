// Commands.h - the commands of tarnmail. Each gives the bytes that it is asked for, or throws
// Failure. Nothing is written here but into the folder and, hidden, beside the place of pages, and
// nothing is left in the kernel or the filter after a call.
#ifndef TARN_TARNMAIL_COMMANDS_H
#define TARN_TARNMAIL_COMMANDS_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "FilterLibrary.h"
#include "MailFile.h"
#include "PageChoice.h"
#include "PageFolder.h"
#include "console/PrivateFolder.h"

namespace tarn::host {

enum class PaperFormat { A4, Letter };

struct InfoOptions {
  MessageChoice message;
  bool json = false;
  bool pages = false;  // lay the document out to know their number
  PaperFormat paper = PaperFormat::A4;
  bool sandbox = true;  // for that
};

struct DocumentOptions {
  MessageChoice message;
  std::optional<std::string> output;  // else standard output
};

struct AttachmentsOptions {
  MessageChoice message;
  bool json = false;
};

struct ExtractOptions {
  MessageChoice message;
  int32_t attachmentNumber = 0;
  std::optional<std::string> output;  // else standard output
};

struct PagesOptions {
  MessageChoice message;
  std::string output;  // a folder; for a PDF a file, "-" or a folder for it
  bool pdf = false;
  int32_t dotsPerInch = 96;  // of PNG files
  PaperFormat paper = PaperFormat::A4;
  PageChoice pages;
  bool sandbox = true;
};

// Pages that are ready to be put in their place.
struct Pages {
  std::unique_ptr<PageFolder> folder;  // with PNG files, else none
  std::string pdf;
  std::string place;  // of the PDF
};

// What the commands work with.
struct Workplace {
  const FilterLibrary& filter;
  PrivateFolder& folder;
};

// What the file is, and what its message becomes: lines for people, or JSON. Of a store whose
// message has no document, what the message lacks.
std::string InfoText(const Workplace& at, const InfoOptions& options);

// The pages of a message, laid out by the helper programs. A PDF has the subject as its title.
// Throws Failure: Broken where the helpers are missing or cannot be kept apart, and on Windows;
// Usage for pages that the document does not have and for a place that cannot be written to.
Pages MakePages(const Workplace& at, const PagesOptions& options);

// What fltInfo tells of a message that is laid out, its number of pages among it. As MakePages.
MessageAnswer LaidOutAnswer(const Workplace& at, const MailFile& mail, const InfoOptions& options);

// The finished document, exactly the bytes that the sibling gets.
std::string DocumentBytes(const Workplace& at, const DocumentOptions& options);

// The attachments with all their properties: a table, or JSON.
std::string AttachmentsText(const Workplace& at, const AttachmentsOptions& options);

// The bytes of one attachment. A number that the message does not have is a failure, and so are
// bytes that are no text for a terminal that nobody asked to get them.
KernelBytes AttachmentBytes(const Workplace& at, const ExtractOptions& options);

}  // namespace tarn::host

#endif
