// Commands.h - the commands of tarnmail. Each gives the bytes that it is asked for, or throws
// Failure. Nothing is written here but into the folder, and nothing is left in the kernel or the
// filter after a call.
#ifndef TARN_TARNMAIL_COMMANDS_H
#define TARN_TARNMAIL_COMMANDS_H

#include <cstdint>
#include <optional>
#include <string>

#include "FilterLibrary.h"
#include "MailFile.h"
#include "PrivateFolder.h"

namespace tarn::host {

struct InfoOptions {
  MessageChoice message;
  bool json = false;
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

// What the commands work with.
struct Workplace {
  const FilterLibrary& filter;
  PrivateFolder& folder;
};

// What the file is, and what its message becomes: lines for people, or JSON. Of a store whose
// message has no document, what the message lacks.
std::string InfoText(const Workplace& at, const InfoOptions& options);

// The finished document, exactly the bytes that the sibling gets.
std::string DocumentBytes(const Workplace& at, const DocumentOptions& options);

// The attachments with all their properties: a table, or JSON.
std::string AttachmentsText(const Workplace& at, const AttachmentsOptions& options);

// The bytes of one attachment. A number that the message does not have is a failure, and so are
// bytes that are no text for a terminal that nobody asked to get them.
KernelBytes AttachmentBytes(const Workplace& at, const ExtractOptions& options);

}  // namespace tarn::host

#endif
